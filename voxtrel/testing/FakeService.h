// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_FAKESERVICE_H
#define VOXTREL_TESTING_FAKESERVICE_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "voxtrel/Event.h"
#include "voxtrel/Settings.h"
#include "voxtrel/Speech.h"
#include "voxtrel/Status.h"

namespace voxtrel::testing {

class FakeHost;

/// A service inside an application's own test: no processes, no runtime, no sound, and whatever
/// faults the test wants. Clients are given it by `ClientOptions::fake`, and it must outlive them.
///
/// It has all five languages, two voices each, named "fr-FR-1" and "fr-FR-2", everything switched
/// on, and keeps the rules of a service. It speaks at once and takes no time, on a thread of its
/// own, and tells of each word; marked-up text is like any other to it. Called on: any thread,
/// event handlers included.
class FakeService {
public:
    FakeService();

    /// No client may be left.
    ~FakeService();
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    /// What has been spoken to its end: texts, and "(pause N ms)" unless N is 0. A text that goes
    /// in pieces is several.
    std::vector<std::string> spoken() const;

    /// Waits until so many have been.
    /// @return false when there were fewer in time.
    bool waitForSpoken(std::size_t count, std::chrono::milliseconds timeout) const;

    /// What was asked of it, one line each, in order; questions that change nothing are left out:
    ///
    ///     register                          unregister
    ///     say 3 "Hello." fr-FR voice 2      with those that are set of: language, voice, speed,
    ///                                       pitch, volume, speech-volume, media-volume
    ///     pause 4 300                       milliseconds
    ///     stop own                          stop everything
    ///     stop process 123                  of which this one has nothing
    ///     lock                              unlock
    ///     set speed 250                     language, voice, ..., as above, and verbosity
    ///     switch speed off                  speech, and those above but for language and verbosity
    ///     reset
    std::vector<std::string> requests() const;

    /// From now on speech begins, and comes to no word, until `goOn`.
    void hold();

    /// Speaks what is held, and on as at first.
    void goOn();

    /// Refuses the next text or pause.
    void refuseNext(Status why);

    /// Never gets the next text or pause, and nobody is told.
    void loseNextRequest();

    /// Does not send the next event of that kind (Started, Word, or Ended) about a text or pause.
    void loseNextEvent(Event::Kind kind = Event::Kind::Ended);

    /// Answers nothing, and sends no events, until `thaw`: like a stopped process that has no room
    /// for requests any more. Every thread that asks it something is kept until then, or until the
    /// service dies or is destroyed.
    void freeze();
    void thaw();

    /// Takes so long for each request that has an answer.
    void answerAfter(std::chrono::milliseconds delay);

    /// Dies at once, also when frozen. Clients that look for it find nothing until `comeBack`.
    void die();

    /// Thaws, tells whom it cuts off that it is being ended, and dies.
    void shutDown();

    /// Is there again, with default settings, speaking at once.
    void comeBack();

    /// Another process stops everything, or takes the lock, from whom that may be, or gives it
    /// back.
    void stopByAnother();
    void lockByAnother(std::uint32_t process);
    void unlockByAnother();

private:
    const std::shared_ptr<FakeHost> mState;
    friend FakeHost& hostOf(FakeService& service);
};

}  // namespace voxtrel::testing

#endif
