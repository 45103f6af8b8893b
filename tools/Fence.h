// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_FENCE_H
#define VOXTREL_TOOLS_FENCE_H

#include "tools/EventQueue.h"
#include "tools/Session.h"

namespace voxtrelctl {

/// A pause of 49 days, which a service refuses at once with an event. It serves the requests of one
/// client in the order sent, so that event says that it is through with those before, as far as
/// they have reached it.
///
/// A service that takes such a pause would be silent for weeks: then the pause is recalled, and
/// with it, there is no other way, whatever of this client's has not been spoken yet.
/// Called on: the main thread. Locks: none.
class Fence {
public:
    /// The session must outlive this object.
    explicit Fence(Session& session) : mSession(session) {}

    /// Recalls what has not been answered.
    ~Fence();
    Fence(const Fence&) = delete;
    Fence& operator=(const Fence&) = delete;

    /// Sends it, without waiting, whether speech is on or not; once more if it may have been lost.
    void send();

    /// Takes note of an event about the fence, and of the death of the service; recalls a fence
    /// that has been taken.
    void see(const Notice& notice);

    /// Asks the service to drop what this client asked for, the fence included; once.
    void recall();

    /// Recalls what is pending, and waits a moment for the event about it.
    void finish();

    /// Sent, and not at its end.
    bool isPending() const { return mPending; }

    /// The service has sent an event about it.
    bool wasAnswered() const { return mAnswered; }

    /// The service did not refuse it.
    bool wasTaken() const { return mTaken; }

    static bool isFence(const Event& event);

private:
    Session& mSession;
    bool mPending = false;
    bool mRecalled = false;
    bool mAnswered = false;
    bool mTaken = false;
};

/// Says on standard error that the service takes a pause of any length.
void warnOfAnyPause();

}  // namespace voxtrelctl

#endif
