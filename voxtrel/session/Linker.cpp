// SPDX-License-Identifier: Apache-2.0
// The thread of a session that finds the service and registers with it.
#include "ipc/BnCallback.h"
#include "vocabulary/Status.h"
#include "voxtrel/session/DeviceFilter.h"
#include "voxtrel/session/Session.h"

namespace voxtrel {
namespace {

/// How often the service is looked for: often at first, so that a restart is hardly noticed.
constexpr std::chrono::milliseconds kPause(20);
constexpr std::chrono::milliseconds kLongPause(250);
constexpr std::chrono::seconds kAtFirst(30);

/// A service that loads its voices is asked so often whether it has.
constexpr std::chrono::milliseconds kLoadingPause(50);

/// A question that takes longer is stuck. A service that loads its voices may be slow.
constexpr std::chrono::milliseconds kPrompt(200);
constexpr std::chrono::milliseconds kPromptWhileLoading(2000);

class SessionCallback : public TTS::BnCallback {
public:
    explicit SessionCallback(std::weak_ptr<Session> session) : mSession(std::move(session)) {}

    bool notify(unsigned event, unsigned second, unsigned third) override {
        if (const std::shared_ptr<Session> session = mSession.lock()) {
            session->onNotify(event, second, third);
        }
        return true;
    }

private:
    const std::weak_ptr<Session> mSession;
};

}  // namespace

void Session::link() {
    std::unique_lock<std::mutex> lock(mMutex);
    Clock::time_point since = Clock::now();
    while (!mIsEnding) {
        if (mService != nullptr) {
            mToLink.wait(lock);
            since = Clock::now();
            continue;
        }
        const std::uint64_t life = ++mLife;
        TTS::Capabilities capabilities;
        lock.unlock();
        Port::Found found = connect(life, capabilities);
        lock.lock();
        if (found.service != nullptr && !isOver(life)) {
            publish(found.service, capabilities);
            continue;
        }
        mWhyNot = {found.status, found.why};
        if (found.service != nullptr) {
            lock.unlock();
            (void)found.service->deregisterCallback(mPid);
            found.service.clear();
            lock.lock();
        }
        mStage = Stage::Waiting;
        const bool isEarly = Clock::now() < since + kAtFirst;
        const bool isPrompt = isEarly && mWhyNot.status != Status::PermissionDenied;
        mToLink.wait_for(lock, isPrompt ? kPause : kLongPause, [this] { return mIsEnding; });
    }
    finish(mLinker);
}

/// A service among what is found has this client's callback.
Port::Found Session::connect(std::uint64_t life, TTS::Capabilities& capabilities) {
    enter(Stage::Searching);
    Port::Found found = mPort->find([weak = weak_from_this(), life] {
        if (const std::shared_ptr<Session> session = weak.lock()) {
            session->onDeath(life);
        }
    });
    noteAbsence(found.service == nullptr);
    if (found.service == nullptr) {
        return found;
    }
    enter(Stage::Registering);
    if (mCallback == nullptr) {
        mCallback = new SessionCallback(weak_from_this());
    }
    // Services differ in what they answer; whether the client is admitted, the capabilities tell.
    (void)found.service->registerCallback(mPid, mCallback);
    if (!awaitReady(life, *found.service, capabilities)) {
        found.status = Status::NoService;
        found.why = describe(Status::NoService);
        return found;
    }
    if (!capabilities.permitted) {
        return {nullptr, Status::PermissionDenied, describe(Status::PermissionDenied)};
    }
    removeFiltered(capabilities);
    return found;
}

void Session::noteAbsence(bool isAbsent) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsAbsent = isAbsent;
    mIsReady = false;
    mChanged.notify_all();
}

bool Session::awaitReady(std::uint64_t life, Service& service, TTS::Capabilities& capabilities) {
    (void)service.getCapabilities(capabilities);
    while (!capabilities.ready) {
        enter(Stage::Loading);
        {
            std::unique_lock<std::mutex> lock(mMutex);
            mToLink.wait_for(lock, kLoadingPause, [&] { return mIsReady || isOver(life); });
            mIsReady = false;
            if (isOver(life)) {
                return false;
            }
        }
        enter(Stage::AskingAgain);
        (void)service.getCapabilities(capabilities);
    }
    return true;
}

bool Session::isOver(std::uint64_t life) const {
    return mIsEnding || mDeadLife == life;
}

void Session::enter(Stage stage) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mStage != stage) {
        mStage = stage;
        mStageBegun = Clock::now();
    }
}

void Session::publish(const android::sp<Service>& service, const TTS::Capabilities& capabilities) {
    mService = service;
    mCapabilities = std::make_shared<const TTS::Capabilities>(capabilities);
    Event event;
    event.kind = Event::Kind::Connected;
    tellAll(event);
    mChanged.notify_all();
    mToSend.notify_one();
}

void Session::onDeath(std::uint64_t life) {
    android::sp<Service> dead;  // let go without the lock
    const std::lock_guard<std::mutex> lock(mMutex);
    if (life != mLife || mDeadLife == life) {
        return;
    }
    mDeadLife = life;
    if (mService == nullptr) {
        mToLink.notify_one();
        return;
    }
    dead = mService;
    mService.clear();
    mGone = Clock::now();
    mWhyNot = {Status::NoService, describe(Status::NoService)};
    mStage = Stage::Waiting;
    failCalls(TTS::STATUS_NO_SERVICE);
    answerFences(Answer::Gone);
    mLockAnswer = Answer::Gone;
    mLockHolder = 0;
    mOwesUnlock = false;
    Event event;
    event.kind = Event::Kind::Disconnected;
    tellAll(event);
    mChanged.notify_all();
    mToSend.notify_one();
    mToLink.notify_one();
}

/// Why there is no connection, in the words of what it waits for.
Error Session::unavailable() const {
    const bool isLoading = mStage == Stage::Loading || mStage == Stage::AskingAgain;
    const bool isAsking = mStage != Stage::Waiting && mStage != Stage::Loading;
    const auto patience = isLoading ? kPromptWhileLoading : kPrompt;
    const bool isPrompt = !isAsking || Clock::now() < mStageBegun + patience;
    if (isPrompt && isLoading) {
        return {Status::NoService, "the service is loading its voices: wait a little longer"};
    }
    if (isPrompt) {
        return mWhyNot;
    }
    if (mStage == Stage::Searching) {
        return {Status::Unresponsive,
                "the service manager does not answer: it may be stopped, or not be there"};
    }
    return {Status::Unresponsive, "the service does not answer: it may be stopped"};
}

}  // namespace voxtrel
