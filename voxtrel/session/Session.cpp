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

std::mutex gMutex;
std::weak_ptr<Session>& theSession() {
    static auto& session = *new std::weak_ptr<Session>;  // threads may outlive static objects
    return session;
}

}  // namespace

std::shared_ptr<Session> Session::ofProcess(const std::shared_ptr<Mailbox>& client) {
    const std::lock_guard<std::mutex> guard(gMutex);
    std::shared_ptr<Session> session = theSession().lock();
    if (session == nullptr || !session->join(client)) {
        session = std::make_shared<Session>(std::make_unique<BinderPort>(), session);
        session->join(client);
        session->start();
        theSession() = session;
    }
    return session;
}

Session::Session(std::unique_ptr<Port> port, std::shared_ptr<Session> predecessor)
    : mPort(std::move(port)),
      mPredecessor(std::move(predecessor)),
      mPid(static_cast<unsigned>(getpid())),
      mSpeech([this](Mailbox& client, Event&& event) { tell(client, std::move(event)); }) {}

Session::~Session() = default;

void Session::start() {
    const std::lock_guard<std::mutex> lock(mMutex);
    startThread(mLinker, &Session::link);
    startThread(mSender, &Session::send);
}

void Session::startThread(std::thread& thread, void (Session::*loop)()) {
    ++mThreads;
    thread = std::thread([self = shared_from_this(), loop] {
        (self.get()->*loop)();
        const std::lock_guard<std::mutex> lock(self->mMutex);
        --self->mThreads;
        self->mChanged.notify_all();
    });
}

bool Session::join(const std::shared_ptr<Mailbox>& client) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mIsEnding) {
        return false;
    }
    mClients.push_back(client);
    return true;
}

void Session::startHandling() {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!mHandler.joinable() && !mIsEnding) {
        startThread(mHandler, &Session::handle);
    }
}

void Session::leave(const std::shared_ptr<Mailbox>& client, Clock::time_point deadline) {
    client->close();
    std::unique_lock<std::mutex> lock(mMutex);
    mSpeech.close(*client);
    mClients.erase(std::remove(mClients.begin(), mClients.end(), client), mClients.end());
    if (mClients.empty() && !mIsEnding) {
        end(lock, deadline);
    }
}

void Session::end(std::unique_lock<std::mutex>& lock, Clock::time_point deadline) {
    mIsEnding = true;
    mToSend.notify_all();
    mToLink.notify_all();
    mToHandle.notify_all();
    mChanged.notify_all();
    const bool isHandler = mHandler.get_id() == std::this_thread::get_id();
    const unsigned left = isHandler ? 1 : 0;
    if (mIsStuck) {
        deadline = std::min(deadline, Clock::now() + kToEnd);
    }
    mChanged.wait_until(lock, deadline, [&] { return mThreads == left; });
    const bool areOver = mThreads == left;
    lock.unlock();
    for (std::thread* thread : {&mLinker, &mSender, &mHandler}) {
        if (!thread->joinable()) {
            continue;
        }
        // A thread that the runtime keeps ends by itself when the service answers or dies.
        if (areOver && thread->get_id() != std::this_thread::get_id()) {
            thread->join();
        } else {
            thread->detach();
        }
    }
}

void Session::say(const std::shared_ptr<Speech>& speech) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSpeech.add(speech);
    mToSend.notify_one();
}

void Session::refuse(const std::shared_ptr<Speech>& speech, Status status) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSpeech.refuse(speech, status);
}

void Session::stop(const std::shared_ptr<Mailbox>& client) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mSpeech.stop(*client)) {
        post([pid = mPid](Service& service) { return service.stopAndFlush(pid, wire::kFlushOwn); });
    }
    mToSend.notify_one();
}

Result<void> Session::stopEverybody(const std::shared_ptr<Mailbox>& by,
                                    Clock::time_point deadline) {
    std::uint32_t fence = 0;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mSpeech.blame(*by);
        mFence = (mFence + 1) % kFirstFence;
        fence = kFirstFence + mFence;
        mFences[fence] = Answer::None;
    }
    const Result<void> sent = perform(
        [pid = mPid, fence](Service& service) {
            (void)service.stopAndFlush(pid, wire::kFlushEverything);
            (void)service.silence(pid, fence, wire::kEndlessPause, WireSettings::kNotSet);
            return 0;  // what comes of them, events tell
        },
        deadline);
    std::unique_lock<std::mutex> lock(mMutex);
    Answer& answer = mFences[fence];
    if (sent) {
        mChanged.wait_until(lock, deadline, [&] { return answer != Answer::None || mIsEnding; });
    }
    const Answer found = answer;
    mFences.erase(fence);
    if (!sent) {
        return sent;
    }
    if (found != Answer::Yes) {
        return errorOf(found);
    }
    mSpeech.dropWaiting(*by);
    return {};
}

Error Session::errorOf(Answer answer) {
    const auto status = [answer] {
        switch (answer) {
            case Answer::Refused:
                return Status::PermissionDenied;
            case Answer::Locked:
                return Status::Locked;
            case Answer::Gone:
                return Status::NoService;
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
        return !mSpeech.isWaiting(client) || mService == nullptr || mIsStuck;
    });
}

bool Session::isConnected() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mService != nullptr;
}

Result<void> Session::waitUntilConnected(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mChanged.wait_until(lock, deadline, [this] { return mService != nullptr; })) {
        return unavailable();
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

Result<void> Session::perform(Work work, Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (mIsStuck) {
        return Error{Status::Unresponsive, describe(Status::Unresponsive)};
    }
    if (!mChanged.wait_until(lock, deadline, [this] { return mService != nullptr; })) {
        return unavailable();
    }
    const auto call = std::make_shared<Call>();
    call->work = std::move(work);
    mCalls.push_back(call);
    mToSend.notify_one();
    if (!mChanged.wait_until(lock, deadline, [&] { return call->isDone; })) {
        mCalls.erase(std::remove(mCalls.begin(), mCalls.end(), call), mCalls.end());
        mIsStuck = mIsInside;
        return Error{Status::TimedOut, describe(Status::TimedOut)};
    }
    if (call->status == 0) {
        return {};
    }
    const auto status = static_cast<Status>(call->status);
    return Error{status, describe(status)};
}

Result<void> Session::lock(const Mailbox& client, Clock::time_point deadline) {
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        if (mLockOwner != nullptr) {
            return Error{Status::Locked, "another client of this process holds the lock"};
        }
        mLockOwner = &client;
        mLockAnswer = Answer::None;
    }
    const Result<void> sent =
        perform([pid = mPid](Service& service) { return (void)service.lock(pid), 0; }, deadline);
    std::unique_lock<std::mutex> lock(mMutex);
    if (sent) {
        mChanged.wait_until(lock, deadline, [this] { return mLockAnswer != Answer::None; });
    }
    if (sent && mLockAnswer == Answer::Yes) {
        return {};
    }
    mLockOwner = nullptr;
    if (sent && mLockAnswer == Answer::None) {
        post([pid = mPid](Service& service) { return service.unlock(pid); });  // it may have it
    }
    return sent ? errorOf(mLockAnswer) : sent;
}

void Session::unlock(const Mailbox& client) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mLockOwner == &client) {
        mLockOwner = nullptr;
        post([pid = mPid](Service& service) { return service.unlock(pid); });
    }
}

bool Session::holdsLock(const Mailbox& client) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLockOwner == &client && mLockAnswer == Answer::Yes;
}

void Session::onNotify(unsigned event, unsigned second, unsigned third) {
    const std::lock_guard<std::mutex> lock(mMutex);
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
    const auto fence = mFences.find(second);
    if (fence == mFences.end()) {
        mSpeech.onEvent(event, second, third, Clock::now());
        mToSend.notify_one();
        return;
    }
    // A refusal of the lock's is that of the request before; any other word proves it was served.
    const bool isLocked =
        event == TTS::EVENT_STOPPED && static_cast<std::int32_t>(third) == TTS::STATUS_LOCKED;
    if (fence->second == Answer::None) {
        fence->second = isLocked ? Answer::Locked : Answer::Yes;
        mChanged.notify_all();
    }
    if (event == TTS::EVENT_STARTED) {  // the service takes the pause: it must not last
        post([pid = mPid](Service& service) { return service.stopAndFlush(pid, wire::kFlushOwn); });
    }
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
    if (state == TTS::STATE_LOCK && mLockOwner != nullptr) {
        if (value == mPid) {
            mLockAnswer = Answer::Yes;
        } else if (value != 0) {
            mLockAnswer = Answer::Locked;
        } else if (mLockAnswer == Answer::Yes) {
            mLockAnswer = Answer::Gone;
        }
        mChanged.notify_all();
    }
    Event event;
    event.kind = Event::Kind::Changed;
    event.setting = static_cast<Event::Setting>(state);
    event.value = value;
    tellAll(event);
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
        mToHandle.notify_one();
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
    while (true) {
        mToHandle.wait(lock, [this] { return mHasNews || mIsEnding; });
        if (mIsEnding) {
            return;
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
}

}  // namespace voxtrel
