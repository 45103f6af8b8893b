// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_SPEAKER_H
#define VOXTREL_TESTS_SOAK_SPEAKER_H

#include <chrono>
#include <memory>
#include <string>

#include "tests/soak/Ledger.h"

namespace soak {

using Milliseconds = std::chrono::milliseconds;

/// What is said, and what is to be done when it is lost.
struct Speech {
    std::string text;
    std::string language;  ///< empty: the service's
    int onLoss = 0;        ///< as `voxtrel::OnLoss`
};

/// A client of the interface in one of its languages. Whatever it says, and what becomes of it,
/// goes into the ledger. Its destruction is the client's end, which may take `kEnd`.
class Speaker {
public:
    static constexpr Milliseconds kEnd{4000};

    virtual ~Speaker() = default;

    virtual void say(const Speech& speech) = 0;
    virtual void pause(Milliseconds length) = 0;
    virtual void stop() = 0;
    virtual void stopEverybody(Milliseconds deadline) = 0;
    virtual void readSettings(Milliseconds deadline) = 0;
    virtual void readFeatures(Milliseconds deadline) = 0;
    virtual void readSwitch(Milliseconds deadline) = 0;
    virtual void changeSpeed(unsigned speed, Milliseconds deadline) = 0;

    /// Takes the lock, and gives it back unless the end does.
    virtual void lock(Milliseconds deadline) = 0;
    virtual void unlock() = 0;

    /// False when something has no outcome in time.
    virtual bool waitForAll(Milliseconds timeout) = 0;

    /// Where events come on the application's thread.
    virtual void dispatch() = 0;

    /// Utterances without an outcome as far as events have told.
    virtual std::size_t open() const = 0;
};

/// @param client is what the ledger calls it.
/// @param isPolled: events come in `dispatch`.
std::unique_ptr<Speaker> speakerInCpp(Ledger& ledger, unsigned client, bool isPolled);
std::unique_ptr<Speaker> speakerInC(Ledger& ledger, unsigned client, bool isPolled);

}  // namespace soak

#endif
