// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_SESSION_H
#define VOXTREL_SESSION_SESSION_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "ipc/ITextToSpeechFestival.h"
#include "vocabulary/Capabilities.h"
#include "voxtrel/Result.h"
#include "voxtrel/Settings.h"
#include "voxtrel/session/Mailbox.h"
#include "voxtrel/session/Port.h"
#include "voxtrel/session/SpeechQueue.h"
#include "voxtrel/session/SpeechRules.h"
#include "voxtrel/session/Worker.h"

namespace voxtrel {

/// What the clients of a process share: the connection to the service, and two threads.
///
/// The connector finds the service and registers with it. The sender makes every request, in order.
/// The runtime's calls, which may take for ever, are made on these two alone and without a lock;
/// whoever needs an answer posts the request and waits with a deadline.
///
/// Where memory runs out, whoever called gets std::bad_alloc. The session's own threads, and those
/// of the runtime that tell it of events, go on: what they could not send counts as lost, and what
/// they could not tell is not told.
///
/// Called on: any thread. Locks: one, held for as long as it takes to look or to note.
class Session : public std::enable_shared_from_this<Session> {
public:
    using Clock = std::chrono::steady_clock;
    using Service = TTS::ITextToSpeechFestival;

    /// A request with an answer; its status goes to the caller.
    using Work = std::function<int(Service&)>;

    /// Numbers of fences lie above those of utterances.
    static constexpr std::uint32_t kFirstFence = 0x80000000;

    using NewSession = std::function<std::shared_ptr<Session>()>;

    /// The session of this process, begun if there is none, which `client` has joined.
    /// @param trusted whose service it may find, if it is begun; as `ClientOptions::trustedUsers`.
    static std::shared_ptr<Session> ofProcess(
        const std::shared_ptr<Mailbox>& client,
        const std::optional<std::vector<std::uint32_t>>& trusted);

    /// The session at `place`, begun there if there is none, which `client` has joined. One that
    /// has ended and whose threads are kept by the runtime goes on with these, so that there are
    /// never more. Called by: one thread at a time for one place.
    static std::shared_ptr<Session> joinAt(std::weak_ptr<Session>& place,
                                           const NewSession& newSession,
                                           const std::shared_ptr<Mailbox>& client);

    /// @param lastNumber numbers on the wire go on from there.
    explicit Session(std::unique_ptr<Port> port, std::uint32_t lastNumber = 0);
    ~Session();

    /// The client has a handler that runs on a thread of this session's.
    void startHandling();

    /// The client's utterances get their outcome; its handler does not run any more. With the last
    /// client the session ends: it leaves the service, if that answers in time.
    void leave(const std::shared_ptr<Mailbox>& client, Clock::time_point deadline);

    /// These never wait.
    void say(const std::shared_ptr<Speech>& speech);
    void refuse(const std::shared_ptr<Speech>& speech, Status status);
    void stop(const std::shared_ptr<Mailbox>& client);

    Result<void> stopEverybody(const std::shared_ptr<Mailbox>& by, Clock::time_point deadline);
    Result<void> stopProcess(std::uint32_t process, Clock::time_point deadline);
    bool waitForAll(const Mailbox& client, Clock::time_point deadline);

    /// Returns at once where there is no service, or none that answers.
    void waitUntilSent(const Mailbox& client, Clock::time_point deadline);

    unsigned pid() const { return mPid; }
    bool isConnected() const;
    Result<void> waitUntilConnected(Clock::time_point deadline);
    Result<TTS::Capabilities> capabilities(Clock::time_point deadline);
    Result<Features> features(Clock::time_point deadline);

    /// Waits until it is known how far the way to the service goes.
    Diagnosis diagnose(Clock::time_point deadline);

    /// Waits until the service has served every request to speak of this client.
    Result<void> waitUntilTaken(const Mailbox& client, Clock::time_point deadline);

    /// Asks for an event, unless one that was asked for may still come, and waits for it.
    Result<void> checkEvents(Clock::time_point deadline);

    /// Has `work` done on the sender's thread, by requests that have an answer.
    /// @return an Error also for a status other than 0, and where one of the requests was lost or
    /// is not served.
    Result<void> request(Work work, Clock::time_point deadline);

    /// As `request`, for a work that looks itself what becomes of its requests.
    Result<void> perform(Work work, Clock::time_point deadline);

    /// As `perform`, for an answer beside the status.
    template <typename Answer>
    Result<Answer> ask(std::function<int(Service&, Answer&)> work, Clock::time_point deadline) {
        const auto answer = std::make_shared<Answer>();  // outlives a caller that has given up
        const Result<void> done = perform(
            [work = std::move(work), answer](Service& service) { return work(service, *answer); },
            deadline);
        return done ? Result<Answer>(std::move(*answer)) : Result<Answer>(done.error());
    }

    /// The lock is the process's: one client of it has it at a time. The number that a lock is
    /// given tells it from an earlier one of the same client.
    Result<std::uint64_t> lock(const Mailbox& client, Clock::time_point deadline);
    void unlock(std::uint64_t number);
    void unlock(const Mailbox& client);
    bool holdsLock(std::uint64_t number) const;

    /// @return the process whose lock was broken; 0: nobody's.
    Result<std::uint32_t> breakLock(const Mailbox& client, Clock::time_point deadline);
    Result<LockState> lockState(Clock::time_point deadline);

    /// An event of the service. Called on: binder threads.
    void onNotify(unsigned event, unsigned second, unsigned third);

private:
    struct Call {
        Work work;
        std::function<void()> owe = nullptr;  ///< notes that it is wanted still; null: it is not
        int status = 0;
        bool isOutOfMemory = false;  ///< in place of a status
        bool isDone = false;
    };
    /// What a waiter learns from events: of a fence, or of the lock.
    enum class Answer { None, Yes, Refused, Locked, Gone, Lost };
    using Fences = std::map<std::uint32_t, Answer>;

    /// What became of requests with a fence behind them: whether they were sent, and what the
    /// service told then.
    struct Fenced {
        Result<void> sent;
        Answer answer = Answer::None;
    };

    /// What the service that was found can do, as far as applications may use it.
    struct Offer {
        std::shared_ptr<const TTS::Capabilities> capabilities;
        Features features;
    };

    /// What the connector is in. It asks, which may take for ever, or waits before it asks again:
    /// `Loading` is the wait for a service that has no voices yet.
    enum class Stage { Waiting, Searching, Registering, Loading, AskingAgain };

    void join(const std::shared_ptr<Mailbox>& client);
    void finish(Worker& worker);
    bool isAlone() const;

    // The connector's (Connector.cpp).
    void keepConnected();
    void connectOnce(std::unique_lock<std::mutex>& lock, Clock::time_point& since);
    Port::Found connect(std::uint64_t life, Offer& offer);
    bool registerWith(Service& service);
    void noteSearch(const Port::Found& found);
    bool awaitReady(std::uint64_t life, Service& service, TTS::Capabilities& capabilities);
    void enter(Stage stage);
    bool isOver(std::uint64_t life) const;
    void publish(const android::sp<Service>& service, Offer&& offer);
    void onDeath(std::uint64_t life);
    Diagnosis diagnose(std::unique_lock<std::mutex>& lock) const;
    Error unavailable(std::unique_lock<std::mutex>& lock) const;
    bool waitUntilKnown(std::unique_lock<std::mutex>& lock, Clock::time_point deadline);
    Reach reachOfStage(const Diagnosis& seen) const;

    // The sender's (Sender.cpp).
    void send();
    bool sendOne(std::unique_lock<std::mutex>& lock);
    bool sendCall(std::unique_lock<std::mutex>& lock);
    void runCall(std::unique_lock<std::mutex>& lock);
    int callService(std::unique_lock<std::mutex>& lock, const Work& work);
    void transmit(std::unique_lock<std::mutex>& lock, const SpeechRequest& request);
    bool holdsSpeech() const;
    Clock::time_point endOfLife() const;
    void endLife();
    void deregister(std::unique_lock<std::mutex>& lock);
    void leaveService(std::unique_lock<std::mutex>& lock);
    void checkLiveness(std::unique_lock<std::mutex>& lock);
    Clock::time_point nextMoment() const;
    void post(Work work, std::function<void()> owe = nullptr);
    void failCalls(int status);

    // The handler thread's.
    void handle();
    void tell(Mailbox& client, Event&& event);
    void tellAll(const Event& event);

    void note(unsigned event, unsigned second, unsigned third);
    void onFence(std::uint32_t number, unsigned event, unsigned third);
    void recallFence();
    void onState(unsigned state, unsigned value);
    void onLock(unsigned holder);
    void giveBackLock();
    void postUnlock();
    void postFlush();
    std::uint32_t newFence();
    void answerFences(Answer answer);
    void end(std::unique_lock<std::mutex>& lock, Clock::time_point deadline);
    void endDropped(std::unique_lock<std::mutex>& lock, DroppedSpeech dropped);
    static Error errorOf(Answer answer, const char* refused = nullptr);
    Error lockedError() const;

    Fenced performFenced(std::unique_lock<std::mutex>& lock, std::function<void(Service&)> requests,
                         Clock::time_point deadline);
    Answer awaitFence(std::unique_lock<std::mutex>& lock, std::uint32_t fence,
                      Clock::time_point deadline);

    const std::unique_ptr<Port> mPort;
    const unsigned mPid;

    mutable std::mutex mMutex;
    std::condition_variable mChanged;    ///< anything that a caller waits for
    std::condition_variable mToSend;     ///< something for the sender
    std::condition_variable mToConnect;  ///< something for the connector
    std::condition_variable mToHandle;   ///< something for the handler thread

    android::sp<Service> mService;  ///< null: not connected
    android::sp<TTS::ICallback> mCallback;
    std::shared_ptr<const TTS::Capabilities> mCapabilities;
    Features mFeatures;
    Stage mStage = Stage::Waiting;
    Clock::time_point mStageBegun = Clock::now();
    Reach mReach = Reach::NoService;  ///< of the last search
    Peer mPeer;                       ///< the service that was found last
    bool mTakesAnyPause = false;      ///< that one
    bool mHasSearched = false;        ///< once, to its end
    std::uint64_t mLife = 0;          ///< counts the services found
    std::uint64_t mDeadLife = 0;      ///< the last that died
    bool mIsAbsent = false;           ///< there was none when the connector last looked
    bool mIsReady = false;            ///< the one that is loading has said that it has its voices
    std::optional<Clock::time_point> mDiedAt;  ///< it died then; its last events may still come

    SpeechQueue mSpeech;
    unsigned mEndings = 0;  ///< threads that give dropped speech its outcomes
    std::deque<std::shared_ptr<Call>> mCalls;
    Clock::time_point mWakeAt = {};  ///< when the sender looks again by itself
    bool mIsInside = false;          ///< the sender is in a call of the runtime
    Clock::time_point mInsideSince = {};
    bool mIsStuck = false;  ///< and somebody has given up waiting for it

    Fences mFences;  ///< that callers wait for, by number: until then no speech is sent
    std::uint32_t mFence = 0;
    std::uint32_t mOpenFence = 0;         ///< the last that was sent, until its end is told
    Clock::time_point mFenceSent = {};    ///< when it was
    std::uint32_t mEventFence = 0;        ///< of `checkEvents`, until that has seen the answer
    bool mIsEventTold = false;            ///< the answer
    std::uint64_t mEventsTold = 0;        ///< counts the answers
    std::uint32_t mLockFence = 0;         ///< when it is answered, the last request for the lock is
    const Mailbox* mLockOwner = nullptr;  ///< has the lock, or has asked for it
    std::uint64_t mLock = 0;              ///< number of the owner's
    Answer mLockAnswer = Answer::None;
    bool mOwesUnlock = false;       ///< it was given back, and the service is still to be told
    std::uint32_t mLockHolder = 0;  ///< as the service told last; 0: nobody, or not told

    std::vector<std::shared_ptr<Mailbox>> mClients;
    Worker mConnector;
    Worker mSender;
    Worker mHandler;
    bool mHasNews = false;   ///< for the handler thread
    bool mIsNoting = false;  ///< an event is noted; the handler thread is woken behind the lock
    bool mIsEnding = false;
    std::uint64_t mEnds = 0;  ///< counts them
};

}  // namespace voxtrel

#endif
