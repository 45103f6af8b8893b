// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_FAKESTATE_H
#define VOXTREL_TESTING_FAKESTATE_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ipc/ICallback.h"
#include "voxtrel/Event.h"
#include "voxtrel/session/SpeechRules.h"
#include "voxtrel/testing/FakeSettings.h"

namespace voxtrel::testing {

/// What a fake service is, in any of its lives.
///
/// Requests with an answer are served on the thread that makes them; those without one, speech and
/// events are the business of the service's own thread, in order. Called on: any thread. Locks:
/// one, never while a client is called.
class FakeState {
public:
    using Callback = android::sp<TTS::ICallback>;

    FakeState();
    ~FakeState();
    FakeState(const FakeState&) = delete;
    FakeState& operator=(const FakeState&) = delete;

    /// Lets go whoever waits inside, for good.
    void end();

    /// Its present life, of whose end `died` tells; none when it is dead.
    std::optional<std::uint64_t> link(std::function<void()> died);

    bool isAlive(std::uint64_t life) const;

    /// Serves a request that has an answer: -5 if that life of the service has ended.
    int answer(std::uint64_t life, const std::function<int()>& serve);

    /// Takes a request without an answer.
    int take(std::uint64_t life, std::function<void()> serve);

    // What requests do, within `answer` or `take`.
    void enroll(unsigned pid, const Callback& callback);
    void expel(unsigned pid);
    void say(unsigned pid, unsigned number, const std::string& text, const WireSettings& wire);
    void pause(unsigned pid, unsigned number, std::uint32_t length);
    void stop(unsigned pid, bool isEverything);
    void lock(unsigned pid);
    void unlock(unsigned pid);
    int setVerbosity(unsigned pid, int verbosity);
    int set(unsigned pid, VOXTRELAPI_GCONF key, const void* value);
    int turn(unsigned pid, VOXTRELAPI_GCONF key, bool on);
    int enable(unsigned pid, bool on);
    int reset(unsigned pid);
    const FakeSettings& settings() const { return mSettings; }

    // What a test does.
    std::vector<std::string> spoken() const;
    bool waitForSpoken(std::size_t count, std::chrono::milliseconds timeout) const;
    std::vector<std::string> requests() const;
    void hold(bool isHeld);
    void freeze(bool isFrozen);
    void answerAfter(std::chrono::milliseconds delay);
    void refuseNext(Status why);
    void loseNextRequest();
    void loseNextEvent(Event::Kind kind);
    void die();
    void shutDown();
    void comeBack();
    void stopByAnother();
    void setHolder(std::uint32_t process);
    void unlockByAnother();

private:
    struct Utterance {
        unsigned number = 0;
        std::string text;
        std::string result;  ///< of which `spoken` tells
        Callback client;
        bool hasStarted = false;
    };
    struct Telling {
        Callback client;
        unsigned event;
        unsigned second;
        unsigned third;
    };

    bool enter(std::unique_lock<std::mutex>& lock, std::uint64_t life);
    void run();
    bool step(std::unique_lock<std::mutex>& lock);
    bool serveNext();
    void speak();
    void tellWords(const Utterance& utterance);
    void utter(unsigned pid, Utterance utterance, int status);
    bool takeFault(bool& isWanted);
    int changeStatus(unsigned pid) const;
    void drop(int status);
    void tell(const Utterance& utterance, unsigned event, unsigned third);
    void tellState(unsigned state, unsigned value);
    void note(std::string line) { mRequests.push_back(std::move(line)); }

    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
    std::uint64_t mLife = 1;
    bool mIsAlive = true;
    bool mHasEnded = false;  ///< for good
    bool mIsEnding = false;  ///< of this life, in order
    bool mIsFrozen = false;
    bool mIsHeld = false;
    bool mIsTelling = false;  ///< the service's thread calls a client
    std::chrono::milliseconds mDelay{0};
    std::function<void()> mDied;  ///< of who found it last

    unsigned mPid = 0;  ///< of whom `mClient` is
    Callback mClient;
    std::uint32_t mHolder = 0;
    FakeSettings mSettings;

    std::deque<std::function<void()>> mInbox;
    std::deque<Utterance> mSpeech;
    std::deque<Telling> mOutbox;
    std::vector<std::string> mSpoken;
    std::vector<std::string> mRequests;

    Status mRefusal = Status::Ok;  ///< of the next
    bool mLosesRequest = false;
    bool mLosesStarted = false;
    bool mLosesWord = false;
    bool mLosesEnded = false;

    std::thread mThread;
};

}  // namespace voxtrel::testing

#endif
