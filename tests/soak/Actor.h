// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_ACTOR_H
#define VOXTREL_TESTS_SOAK_ACTOR_H

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <random>

#include "tests/soak/Heartbeat.h"
#include "tests/soak/Ledger.h"
#include "tests/soak/Speaker.h"

namespace soak {

using NewSpeaker = std::function<std::unique_ptr<Speaker>(Ledger&, unsigned, bool)>;

/// What the threads of a process share.
struct Stage {
    Ledger& ledger;
    Heartbeat& heartbeat;
    const NewSpeaker newSpeaker;
    std::atomic<unsigned> clients{0};
};

/// A thread's client, with which it does anything, at any time, and another after its end.
class Actor {
public:
    /// @param talks mostly, and does not wait; else it mostly asks for answers.
    Actor(Stage& stage, bool talks, unsigned seed);

    /// Until it is told to end. Called on: its own thread.
    void act();

    /// Is silent until no utterance is open, and does nothing until `proceed`.
    /// @return false when an utterance has no outcome in time.
    bool becomeCalm();
    void proceed() { mIsCalm = false; }

    /// Called on: the thread that then waits for the actor's.
    void end() { mIsEnding = true; }

private:
    /// A service that speaks as slowly as a loudspeaker would never catch up.
    static constexpr std::size_t kMaxOpen = 200;

    void doSomething();
    void speak();
    void request();
    void renew();
    void drop();

    /// Notes how long it took beyond the deadline, but for the time in which nothing here ran.
    void call(const char* name, Milliseconds deadline, const std::function<void()>& make);

    unsigned upTo(unsigned most);
    Milliseconds anyDeadline();
    Speech anySpeech();

    Stage& mStage;
    const bool mTalks;
    std::mt19937 mRandom;
    std::mutex mMutex;  ///< of the client
    std::unique_ptr<Speaker> mSpeaker;
    std::atomic<bool> mIsCalm{false};
    std::atomic<bool> mIsEnding{false};
};

}  // namespace soak

#endif
