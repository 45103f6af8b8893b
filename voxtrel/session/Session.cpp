// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/Session.h"

#include <unistd.h>

#include <algorithm>

#include "vocabulary/Events.h"
#include "vocabulary/Status.h"
#include "voxtrel/session/BinderPort.h"
#include "voxtrel/session/Wire.h"

namespace voxtrel {
namespace {

/// Numbers of fences lie above those of utterances.
constexpr std::uint32_t kFirstFence = 0x80000000;

/// How long a thread that has nothing more to do may take to end.
constexpr std::chrono::milliseconds kToEnd(200);

/// A right service refuses a pause that is too long at once.
constexpr std::chrono::milliseconds kToRefuse(200);

/// A call that takes longer does not answer, whatever the deadline of whoever waits for it.
constexpr std::chrono::milliseconds kPrompt(100);

/// What a dead service answers reads as zeros.
bool isDead(TTS::ITextToSpeechFestival& service) {
    const android::sp<TTS::ITextToSpeechFestival> held = &service;
    return android::IInterface::asBinder(held)->pingBinder() == android::DEAD_OBJECT;
}

/// The service may still speak what an earlier session of this process has left it, and tells the
/// process: the numbers of the next one begin elsewhere.
std::shared_ptr<Session> newSessionOfProcess(
    const std::optional<std::vector<std::uint32_t>>& trusted) {
    constexpr std::uint32_t kNumbersOfOne = 0x100000;
    static std::uint32_t lastNumber = 0;
    lastNumber = (lastNumber + kNumbersOfOne) % kFirstFence;
    return std::make_shared<Session>(std::make_unique<BinderPort>(trusted), lastNumber);
}

std::mutex gMutex;
std::weak_ptr<Session>& theSession() {
    static auto& session = *new std::weak_ptr<Session>;  // threads may outlive static objects
    return session;
}

}  // namespace

std::shared_ptr<Session> Session::ofProcess(
    const std::shared_ptr<Mailbox>& client,
    const std::optional<std::vector<std::uint32_t>>& trusted) {
    const std::lock_guard<std::mutex> guard(gMutex);
    return joinAt(
        theSession(), [&trusted] { return newSessionOfProcess(trusted); }, client);
}

std::shared_ptr<Session> Session::joinAt(std::weak_ptr<Session>& place,
                                         const NewSession& newSession,
                                         const std::shared_ptr<Mailbox>& client) {
    std::shared_ptr<Session> session = place.lock();
    if (session == nullptr || session->pid() != static_cast<unsigned>(getpid())) {
        // A forked child has the memory of its parent's session, and none of the threads.
        session = newSession();
        place = session;
    }
    session->join(client);
    return session;
}

Session::Session(std::unique_ptr<Port> port, std::uint32_t lastNumber)
    : mPort(std::move(port)),
      mPid(static_cast<unsigned>(getpid())),
      mSpeech([this](Mailbox& client, Event&& event) { tell(client, std::move(event)); },
              lastNumber) {}

Session::~Session() = default;

void Session::join(const std::shared_ptr<Mailbox>& client) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mClients.push_back(client);
    mIsEnding = false;
    try {
        mLinker.startWithoutSignals([self = shared_from_this()] { self->link(); });
        mSender.startWithoutSignals([self = shared_from_this()] { self->send(); });
    } catch (...) {
        mClients.pop_back();
        mIsEnding = mClients.empty();
        mToSend.notify_all();
        mToLink.notify_all();
        throw;
    }
    mToSend.notify_all();
    mToLink.notify_all();
}

/// The last that a thread does under the lock.
void Session::finish(Worker& worker) {
    worker.finish();
    mChanged.notify_all();
}

void Session::startHandling() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mHandler.start([self = shared_from_this()] { self->handle(); });
}

void Session::leave(const std::shared_ptr<Mailbox>& client, Clock::time_point deadline) {
    client->close();
    std::unique_lock<std::mutex> lock(mMutex);
    const bool isLast = mClients.size() == 1 && !mSpeech.isWanted(*client);
    const auto isRefused = [this] { return mOpenFence == 0 || mService == nullptr || mIsStuck; };
    const auto inTime = std::min(deadline, mFenceSent + kToRefuse);
    if (isLast && !mChanged.wait_until(lock, inTime, isRefused)) {
        // Lest a service that takes such a pause begins it when nobody recalls it any more.
        post([pid = mPid](Service& service) { return service.stopAndFlush(pid, wire::kFlushOwn); });
    }
    mSpeech.close(*client);
    mClients.erase(std::remove(mClients.begin(), mClients.end(), client), mClients.end());
    if (mClients.empty() && !mIsEnding) {
        end(lock, deadline);
    }
}

/// No thread of the session runs but the caller's.
bool Session::isAlone() const {
    return !mLinker.isRunning() && !mSender.isRunning() &&
           (!mHandler.isRunning() || mHandler.isHere());
}

void Session::end(std::unique_lock<std::mutex>& lock, Clock::time_point deadline) {
    mIsEnding = true;
    const std::uint64_t end = ++mEnds;
    mToSend.notify_all();
    mToLink.notify_all();
    mToHandle.notify_all();
    mChanged.notify_all();
    if (mIsStuck || mService == nullptr) {  // nobody has to be taken leave of
        deadline = std::min(deadline, Clock::now() + kToEnd);
    }
    const auto isOverruled = [&] { return !mIsEnding || mEnds != end; };
    mChanged.wait_until(lock, deadline, [&] { return isAlone() || isOverruled(); });
    if (isOverruled()) {
        return;  // a new client has joined, and goes on with the threads
    }
    // A thread that the runtime keeps ends by itself when the service answers or dies.
    std::thread ended[] = {mLinker.release(), mSender.release(), mHandler.release()};
    lock.unlock();
    for (std::thread& thread : ended) {
        if (thread.joinable()) {
            thread.join();
        }
    }
}

void Session::say(const std::shared_ptr<Speech>& speech) {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mSpeech.add(speech);
    }
    mToSend.notify_one();  // without the lock, which whoever wakes up takes first
}

void Session::refuse(const std::shared_ptr<Speech>& speech, Status status) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSpeech.refuse(speech, status);
}

void Session::stop(const std::shared_ptr<Mailbox>& client) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSpeech.stop(*client);
    if (mOpenFence != 0 && !mSpeech.isAnythingOnItsWay()) {
        post([pid = mPid](Service& service) { return service.stopAndFlush(pid, wire::kFlushOwn); });
    }
    mToSend.notify_one();
}

Result<void> Session::stopEverybody(const std::shared_ptr<Mailbox>& by,
                                    Clock::time_point deadline) {
    std::uint32_t fence = 0;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        fence = newFence();
        mFences[fence] = Answer::None;
    }
    const auto silence = [this, by, fence](Service& service) {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mSpeech.blame(*by);
        }
        (void)service.stopAndFlush(mPid, wire::kFlushEverything);
        (void)service.silence(mPid, fence, wire::kEndlessPause, WireSettings::kNotSet);
        return 0;  // what comes of them, events tell
    };
    Result<void> sent;
    try {
        sent = perform(silence, deadline);
    } catch (...) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mFences.erase(fence);
        mToSend.notify_one();
        throw;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    const Answer found = awaitFence(lock, fence, sent ? deadline : Clock::now());
    if (found == Answer::Yes) {
        mSpeech.dropWaiting(*by);
    } else if (found != Answer::None) {
        mSpeech.blameNobody();
    }
    if (!sent) {
        return sent;
    }
    if (found != Answer::Yes) {
        return errorOf(found, "stop what others say");
    }
    return {};
}

Result<void> Session::stopProcess(std::uint32_t process, Clock::time_point deadline) {
    std::uint32_t fence = 0;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        fence = newFence();
        mFences[fence] = Answer::None;
    }
    const Result<void> sent = perform(
        [pid = mPid, process, fence](Service& service) {
            (void)service.stopAndFlush(process, wire::kFlushOwn);
            (void)service.silence(pid, fence, wire::kEndlessPause, WireSettings::kNotSet);
            return 0;
        },
        deadline);
    std::unique_lock<std::mutex> lock(mMutex);
    const Answer found = awaitFence(lock, fence, sent ? deadline : Clock::now());
    if (!sent || found == Answer::Yes) {
        return sent;
    }
    return errorOf(found, "stop what that process said, or it has said nothing");
}

/// Takes the fence away, so that speech is sent again.
Session::Answer Session::awaitFence(std::unique_lock<std::mutex>& lock, std::uint32_t fence,
                                    Clock::time_point deadline) {
    const Answer& answer = mFences[fence];
    mChanged.wait_until(lock, deadline, [&] { return answer != Answer::None || mIsEnding; });
    const Answer found = answer;
    mFences.erase(fence);
    mToSend.notify_one();
    return found;
}

Result<void> Session::waitUntilTaken(const Mailbox& client, Clock::time_point deadline) {
    std::uint32_t fence = 0;
    {
        std::unique_lock<std::mutex> lock(mMutex);
        const auto isSent = [&] { return !mSpeech.isWaiting(client) && !mIsInside; };
        if (!mChanged.wait_until(lock, deadline, isSent)) {
            return mService == nullptr ? unavailable(lock) : errorOf(Answer::None);
        }
        if (!mSpeech.isOpen(client)) {
            return {};  // whose outcome is known has been served
        }
        fence = newFence();
        mFences[fence] = Answer::None;
    }
    const Result<void> sent = perform(
        [pid = mPid, fence](Service& service) {
            (void)service.silence(pid, fence, wire::kEndlessPause, WireSettings::kNotSet);
            return 0;
        },
        deadline);
    std::unique_lock<std::mutex> lock(mMutex);
    const Answer found = awaitFence(lock, fence, sent ? deadline : Clock::now());
    if (!sent || found == Answer::Yes || found == Answer::Locked) {
        return sent;  // a lock refuses the fence as it refuses the speech, which has been told
    }
    return errorOf(found);
}

Result<void> Session::checkEvents(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mChanged.wait_until(lock, deadline, [this] { return mService != nullptr; })) {
        return unavailable(lock);
    }
    if (mEventFence == 0) {
        mEventFence = newFence();
        post([pid = mPid, fence = mEventFence](Service& service) {
            return service.silence(pid, fence, wire::kEndlessPause, WireSettings::kNotSet);
        });
    }
    const auto isKnown = [this] { return mIsEventTold || mService == nullptr; };
    if (!mChanged.wait_until(lock, deadline, isKnown)) {
        return errorOf(Answer::None);
    }
    if (mService == nullptr) {
        return errorOf(Answer::Gone);
    }
    mEventFence = 0;
    mIsEventTold = false;
    return {};
}

std::uint32_t Session::newFence() {
    mFence = (mFence + 1) % kFirstFence;
    mOpenFence = kFirstFence + mFence;
    mFenceSent = Clock::now();
    return mOpenFence;
}

/// @param refused what this user may not do.
Error Session::errorOf(Answer answer, const char* refused) {
    if (answer == Answer::Refused && refused != nullptr) {
        return {Status::PermissionDenied,
                std::string("this user may not ") + refused + ": ask whoever runs the service"};
    }
    const auto status = [answer] {
        switch (answer) {
            case Answer::Refused:
                return Status::PermissionDenied;
            case Answer::Locked:
                return Status::Locked;
            case Answer::Gone:
                return Status::NoService;
            case Answer::Lost:
                return Status::Lost;
            default:
                return Status::TimedOut;
        }
    }();
    return {status, describe(status)};
}

bool Session::waitForAll(const Mailbox& client, Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_until(lock, deadline, [&] { return !mSpeech.isOpen(client); });
}

void Session::waitUntilSent(const Mailbox& client, Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait_until(lock, deadline, [&] {
        const bool isTaken = !mSpeech.isWaiting(client) && !mIsInside;
        return isTaken || (mService == nullptr && mIsAbsent) || mIsStuck;
    });
}

bool Session::isConnected() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mService != nullptr;
}

Result<void> Session::waitUntilConnected(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mChanged.wait_until(lock, deadline, [this] { return mService != nullptr; })) {
        return unavailable(lock);
    }
    return {};
}

Result<TTS::Capabilities> Session::capabilities(Clock::time_point deadline) {
    const Result<void> connected = waitUntilConnected(deadline);
    if (!connected) {
        return connected.error();
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    return *mCapabilities;
}

Result<Features> Session::features(Clock::time_point deadline) {
    const Result<void> connected = waitUntilConnected(deadline);
    if (!connected) {
        return connected.error();
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    return mFeatures;
}

Result<void> Session::perform(Work work, Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (mIsStuck) {
        return Error{Status::Unresponsive, describe(Status::Unresponsive)};
    }
    if (!mChanged.wait_until(lock, deadline, [this] { return mService != nullptr; })) {
        return unavailable(lock);
    }
    const auto call = std::make_shared<Call>();
    call->work = [work = std::move(work)](Service& service) {
        const int status = work(service);
        return status == 0 && isDead(service) ? TTS::STATUS_NO_SERVICE : status;
    };
    mCalls.push_back(call);
    mToSend.notify_one();
    if (!mChanged.wait_until(lock, deadline, [&] { return call->isDone; })) {
        mCalls.erase(std::remove(mCalls.begin(), mCalls.end(), call), mCalls.end());
        mIsStuck = mIsInside && Clock::now() >= mInsideSince + kPrompt;
        return Error{Status::TimedOut, describe(Status::TimedOut)};
    }
    if (call->status == 0) {
        return {};
    }
    const auto status = static_cast<Status>(call->status);
    return Error{status, describe(status)};
}

Result<std::uint64_t> Session::lock(const Mailbox& client, Clock::time_point deadline) {
    std::uint64_t number = 0;
    std::uint32_t fence = 0;
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        const bool isTaken = mLockAnswer == Answer::None || mLockAnswer == Answer::Yes;
        if (mLockOwner != nullptr && isTaken) {
            return Error{Status::Locked, mLockOwner == &client
                                             ? "this client holds the lock, or asks for it"
                                             : "another client of this process holds the lock"};
        }
        postUnlock();
        mLockOwner = &client;
        mLockAnswer = Answer::None;
        mLockFence = fence = newFence();
        number = ++mLock;
    }
    const auto take = [pid = mPid, fence](Service& service) {
        (void)service.lock(pid);
        (void)service.silence(pid, fence, wire::kEndlessPause, WireSettings::kNotSet);
        return 0;
    };
    Result<void> sent;
    try {
        sent = perform(take, deadline);
    } catch (...) {
        const std::lock_guard<std::mutex> guard(mMutex);
        giveBackLock();
        throw;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    if (sent) {
        mChanged.wait_until(lock, deadline, [this] { return mLockAnswer != Answer::None; });
    }
    const Answer answer = mLockAnswer;
    if (sent && answer == Answer::Yes) {
        return number;
    }
    const bool mayCome =
        sent ? answer == Answer::None || answer == Answer::Lost : sent.status() == Status::TimedOut;
    if (mayCome) {
        giveBackLock();
    }
    mLockOwner = nullptr;
    if (!sent) {
        return sent.error();
    }
    return answer == Answer::Locked ? lockedError() : errorOf(answer, "take the lock");
}

Error Session::lockedError() const {
    if (mLockHolder == 0 || mLockHolder == mPid) {
        return errorOf(Answer::Locked);
    }
    return {Status::Locked, "process " + std::to_string(mLockHolder) +
                                " holds the service's lock: try again when it is free"};
}

Result<std::uint32_t> Session::breakLock(const Mailbox& client, Clock::time_point deadline) {
    const Result<std::uint64_t> own = lock(client, deadline);
    if (own) {
        unlock(*own);
        return 0U;
    }
    std::uint32_t holder = 0;
    std::uint32_t fence = 0;
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        holder = mLockHolder;
        if (own.status() != Status::Locked || holder == 0 || holder == mPid) {
            return own.error();
        }
        fence = newFence();
        mFences[fence] = Answer::None;
    }
    // Only who means to break it names another process than itself.
    const Result<void> sent = perform(
        [pid = mPid, holder, fence](Service& service) {
            (void)service.unlock(holder);
            (void)service.silence(pid, fence, wire::kEndlessPause, WireSettings::kNotSet);
            return 0;
        },
        deadline);
    std::unique_lock<std::mutex> guard(mMutex);
    const Answer found = awaitFence(guard, fence, sent ? deadline : Clock::now());
    if (!sent) {
        return sent.error();
    }
    if (mLockHolder != holder) {
        return holder;
    }
    const bool wasServed = found == Answer::Yes || found == Answer::Locked;
    return errorOf(wasServed ? Answer::Refused : found, "free the lock of another process");
}

Result<LockState> Session::lockState(Clock::time_point deadline) {
    // The switch of nothing: a lock is looked at before it is.
    constexpr auto kNoSwitch = static_cast<VOXTRELAPI_GCONF>(15);
    const Result<LockState> state = ask<LockState>(
        [pid = mPid](Service& service, LockState& out) {
            const int status = service.setEnable2(pid, kNoSwitch, false);
            out = status == TTS::STATUS_LOCKED          ? LockState::HeldByAnother
                  : status == TTS::STATUS_BAD_PARAMETER ? LockState::Free
                                                        : LockState::Unknown;
            return 0;
        },
        deadline);
    const std::lock_guard<std::mutex> guard(mMutex);
    const bool isOwn = mLockOwner != nullptr && mLockAnswer == Answer::Yes;
    return state && *state == LockState::Free && isOwn ? LockState::HeldByThisProcess : state;
}

void Session::unlock(std::uint64_t number) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mLockOwner != nullptr && mLock == number) {
        giveBackLock();
    }
}

void Session::unlock(const Mailbox& client) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mLockOwner == &client) {
        giveBackLock();
    }
}

/// Takes no memory: the end of a lock, or of a client, must not fail.
void Session::giveBackLock() {
    mLockOwner = nullptr;
    mOwesUnlock = mService != nullptr;
    mToSend.notify_one();
}

/// Behind what was wanted before; a request for the lock comes behind it.
void Session::postUnlock() {
    if (mSpeech.takeFlush()) {
        postFlush();
    }
    if (mOwesUnlock) {
        mOwesUnlock = false;
        post([pid = mPid](Service& service) { return service.unlock(pid); });
    }
}

bool Session::holdsLock(std::uint64_t number) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLockOwner != nullptr && mLock == number && mLockAnswer == Answer::Yes;
}

void Session::onNotify(unsigned event, unsigned second, unsigned third) {
    bool hasNews = false;
    bool hasMore = false;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsNoting = true;
        note(event, second, third);
        mIsNoting = false;
        hasNews = mHasNews;
        hasMore = mSpeech.hasMore() || nextMoment() < mWakeAt;
    }
    // Without the lock, which whoever wakes up takes first.
    if (hasNews) {
        mToHandle.notify_one();
    }
    if (hasMore) {
        mToSend.notify_one();
    }
}

void Session::note(unsigned event, unsigned second, unsigned third) {
    if (event == TTS::EVENT_STATE) {
        onState(second, third);
        return;
    }
    const bool isOfUtterance = event == TTS::EVENT_STARTED || event == TTS::EVENT_FINISHED ||
                               event == TTS::EVENT_STOPPED || event == TTS::EVENT_WORD ||
                               event == TTS::EVENT_MARK;
    if (!isOfUtterance) {
        return;
    }
    if (second == mOpenFence && second < kFirstFence && event == TTS::EVENT_STARTED) {
        recallFence();
    }
    if (second == mOpenFence && (event == TTS::EVENT_FINISHED || event == TTS::EVENT_STOPPED)) {
        mOpenFence = 0;
        mChanged.notify_all();
    }
    if (second == mEventFence) {
        mIsEventTold = true;
        mChanged.notify_all();
    }
    if (second >= kFirstFence) {
        onFence(second, event, third);
        return;
    }
    mSpeech.onEvent(event, second, third, Clock::now());
}

void Session::onFence(std::uint32_t number, unsigned event, unsigned third) {
    // A refusal of the lock's is that of the request before; any other word proves it was served.
    const bool isLocked =
        event == TTS::EVENT_STOPPED && static_cast<std::int32_t>(third) == TTS::STATUS_LOCKED;
    if (number == mLockFence && mLockAnswer == Answer::None) {
        // Without a holder the request was lost, or what the service told of it.
        mLockAnswer = isLocked              ? Answer::Locked
                      : mLockHolder == mPid ? Answer::Yes
                      : mLockHolder != 0    ? Answer::Locked
                                            : Answer::Lost;
        mChanged.notify_all();
    }
    const auto fence = mFences.find(number);
    if (fence != mFences.end() && fence->second == Answer::None) {
        fence->second = isLocked ? Answer::Locked : Answer::Yes;
        mChanged.notify_all();
    }
    if (event == TTS::EVENT_STARTED) {
        recallFence();
    }
}

/// The service takes the pause, which must not last.
void Session::recallFence() {
    mTakesAnyPause = true;
    postFlush();
}

void Session::onState(unsigned state, unsigned value) {
    if (state == TTS::STATE_REFUSED) {
        if (value == TTS::REQUEST_STOP) {
            answerFences(Answer::Refused);
        } else if (value == TTS::REQUEST_LOCK && mLockAnswer == Answer::None) {
            mLockAnswer = Answer::Refused;
        }
        mChanged.notify_all();
        return;
    }
    if (state == TTS::STATE_LOCK) {
        onLock(value);
    } else if (state == TTS::STATE_READY && value != 0) {
        mIsReady = true;
        mToLink.notify_one();
    }
    Event event;
    event.kind = Event::Kind::Changed;
    event.setting = static_cast<Event::Setting>(state);
    event.value = value;
    tellAll(event);
}

/// An answer that is awaited is decided by the fence: this may tell of an earlier request.
void Session::onLock(unsigned holder) {
    mLockHolder = holder;
    if (mLockOwner != nullptr && mLockAnswer == Answer::Yes && holder != mPid) {
        mLockAnswer = holder == 0 ? Answer::Gone : Answer::Locked;
        mChanged.notify_all();
    }
}

void Session::answerFences(Answer answer) {
    for (auto& [number, fence] : mFences) {
        fence = fence == Answer::None ? answer : fence;
    }
}

void Session::tell(Mailbox& client, Event&& event) {
    const bool isEnd = event.kind == Event::Kind::Ended;
    if (client.put(std::move(event)) && !client.isPolled()) {
        mHasNews = true;
        if (!mIsNoting) {
            mToHandle.notify_one();
        }
    }
    if (isEnd) {
        mChanged.notify_all();
    }
}

void Session::tellAll(const Event& event) {
    for (const auto& client : mClients) {
        tell(*client, Event(event));
    }
}

void Session::handle() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (!mIsEnding) {
        if (!mHasNews) {
            mToHandle.wait(lock);
            continue;
        }
        mHasNews = false;
        mHandling = mClients;
        lock.unlock();
        for (const auto& client : mHandling) {
            if (!client->isPolled()) {
                client->dispatch();
            }
        }
        mHandling.clear();
        lock.lock();
    }
    finish(mHandler);
}

}  // namespace voxtrel
