// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_FAKESERVICE_H
#define VOXTREL_TESTING_FAKESERVICE_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "voxtrel/Settings.h"
#include "voxtrel/Speech.h"
#include "voxtrel/Status.h"

namespace voxtrel::testing {

/// A service inside an application's own test: no processes, no runtime, no sound, and whatever
/// faults the test wants. Clients are given it by `ClientOptions::fake`, and it must outlive them.
///
/// It has all five languages, two voices each, and keeps the rules of a service. It speaks at once
/// and takes no time, on a thread of its own, unless it is told to wait. Called on: any thread.
class FakeService {
public:
    FakeService();

    /// No client may be left.
    ~FakeService();
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    /// What has been spoken to its end: texts, and "(pause N ms)". A text that goes in pieces is
    /// several.
    std::vector<std::string> spoken() const;

    /// Waits until so many have been.
    /// @return false when there were fewer in time.
    bool waitForSpoken(std::size_t count, std::chrono::milliseconds patience) const;

    /// What was asked of it, one line each, as `say 3 "Hello."` or `stop own`.
    std::vector<std::string> requests() const;

    /// From now on speech begins and does not end until `goOn`.
    void hold();

    /// Ends what is held, and speaks on as at first.
    void goOn();

    /// Refuses the next utterance.
    void refuseNext(Status why);

    /// Never gets the next request to speak, and nobody is told.
    void loseNextRequest();

    /// Does not send the next event about an utterance.
    void loseNextEvent();

    /// Answers nothing, and sends no events, until `thaw`: like a stopped process.
    void freeze();
    void thaw();

    /// Takes so long for each request that has an answer.
    void answerAfter(std::chrono::milliseconds delay);

    /// Dies at once. Clients that look for it find nothing until `comeBack`.
    void die();

    /// Tells whom it cuts off that it is being ended, and dies.
    void shutDown();

    /// Is there again, with default settings.
    void comeBack();

    /// Another process stops everything, or takes or gives back the lock.
    void stopByAnother();
    void lockByAnother(std::uint32_t process);
    void unlockByAnother();

    class State;

private:
    const std::shared_ptr<State> mState;
    friend State& stateOf(FakeService& service);
};

}  // namespace voxtrel::testing

#endif
