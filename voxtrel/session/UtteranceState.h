// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_UTTERANCESTATE_H
#define VOXTREL_SESSION_UTTERANCESTATE_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "voxtrel/Outcome.h"

namespace voxtrel {

/// What the handles on one utterance share. Called on: any thread. Locks: its own, for no longer
/// than it takes to copy.
class UtteranceState {
public:
    using Clock = std::chrono::steady_clock;

    explicit UtteranceState(std::uint64_t number) : mNumber(number) {}

    std::uint64_t number() const { return mNumber; }
    Outcome outcome() const;
    Position position() const;

    /// The outcome, `Pending` if there is none by then.
    Outcome waitUntil(Clock::time_point deadline) const;
    Outcome wait() const;

    void moveTo(Position position);

    /// Only the first outcome counts.
    void end(const Outcome& outcome);

private:
    const std::uint64_t mNumber;
    mutable std::mutex mMutex;
    mutable std::condition_variable mEnded;
    Outcome mOutcome;
    Position mPosition;
};

}  // namespace voxtrel

#endif
