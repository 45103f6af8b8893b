// SPDX-License-Identifier: Apache-2.0
// The thread of a session that finds the service and registers with it.
#include <new>

#include "ipc/BnCallback.h"
#include "vocabulary/Status.h"
#include "voxtrel/session/CheckedCall.h"
#include "voxtrel/session/DeviceFilter.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/session/Surroundings.h"

namespace voxtrel {
namespace {

/// How often the service is looked for: often at first, so that a restart is hardly noticed.
constexpr std::chrono::milliseconds kPause(20);
constexpr std::chrono::milliseconds kLongPause(250);
constexpr std::chrono::seconds kAtFirst(30);

/// A service that loads its voices is asked so often whether it has.
constexpr std::chrono::milliseconds kLoadingPause(50);

/// A right service refuses a pause that is too long at once.
constexpr std::chrono::seconds kToRefuse(1);

/// Who takes longer does not answer if its process is stopped.
constexpr std::chrono::milliseconds kPrompt(200);
/// Else it may just be busy, for so long.
constexpr std::chrono::seconds kBusyLimit(2);

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

void Session::keepConnected() {
    std::unique_lock<std::mutex> lock(mMutex);
    Clock::time_point since = Clock::now();
    while (!mIsEnding) {
        try {
            connectOnce(lock, since);
        } catch (const std::bad_alloc&) {
            if (!lock.owns_lock()) {
                lock.lock();
            }
            mStage = Stage::Waiting;
            mToConnect.wait_for(lock, kPause, [this] { return mIsEnding; });
        }
    }
    finish(mConnector);
}

void Session::connectOnce(std::unique_lock<std::mutex>& lock, Clock::time_point& since) {
    if (mService != nullptr) {
        mToConnect.wait(lock);
        since = Clock::now();
        return;
    }
    const std::uint64_t life = ++mLife;
    Offer offer;
    lock.unlock();
    Port::Found found = connect(life, offer);
    lock.lock();
    if (found.service != nullptr && !isOver(life)) {
        publish(found.service, std::move(offer));
        return;
    }
    mReach = found.service != nullptr ? Reach::NoService : found.reach;
    mHasSearched = true;
    mChanged.notify_all();
    if (found.service != nullptr) {
        lock.unlock();
        (void)found.service->deregisterCallback(mPid);
        found.service.clear();
        lock.lock();
    }
    mStage = Stage::Waiting;
    const bool isEarly = Clock::now() < since + kAtFirst;
    const bool isPrompt = isEarly && mReach != Reach::NotAdmitted && mReach != Reach::NotTrusted;
    mToConnect.wait_for(lock, isPrompt ? kPause : kLongPause, [this] { return mIsEnding; });
}

/// A service among what is found has this client's callback.
Port::Found Session::connect(std::uint64_t life, Offer& offer) {
    enter(Stage::Searching);
    Port::Found found = mPort->find([weak = weak_from_this(), life] {
        if (const std::shared_ptr<Session> session = weak.lock()) {
            session->onDeath(life);
        }
    });
    noteSearch(found);
    if (found.service == nullptr) {
        return found;
    }
    enter(Stage::Registering);
    if (mCallback == nullptr) {
        mCallback = new SessionCallback(weak_from_this());
    }
    if (!registerWith(*found.service)) {
        return {nullptr, Reach::NoService};
    }
    TTS::Capabilities all;
    if (!awaitReady(life, *found.service, all)) {
        found.reach = Reach::NoService;
        return found;
    }
    if (!all.permitted) {
        return {nullptr, Reach::NotAdmitted};
    }
    TTS::Capabilities left = all;
    removeFiltered(left);
    offer.features = toFeatures(left, all);
    offer.capabilities = std::make_shared<const TTS::Capabilities>(std::move(left));
    return found;
}

/// Services differ in what they answer; whether the client is admitted, the capabilities tell.
/// @return whether the request got there: a client whose callback is not known hears of nothing.
bool Session::registerWith(Service& service) {
    const CheckedCall call = callChecked(
        service, [this](Service& checked) { return checked.registerCallback(mPid, mCallback); });
    return !call.isLost();
}

void Session::noteSearch(const Port::Found& found) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsAbsent = found.service == nullptr;
    mPeer = found.peer;
    mTakesAnyPause = false;
    mOpenFence = 0;
    mEventFence = 0;
    mIsEventTold = false;
    mIsReady = false;
    mChanged.notify_all();
}

bool Session::awaitReady(std::uint64_t life, Service& service, TTS::Capabilities& capabilities) {
    (void)service.getCapabilities(capabilities);
    while (!capabilities.ready) {
        enter(Stage::Loading);
        {
            std::unique_lock<std::mutex> lock(mMutex);
            mToConnect.wait_for(lock, kLoadingPause, [&] { return mIsReady || isOver(life); });
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
        mChanged.notify_all();
    }
}

void Session::publish(const android::sp<Service>& service, Offer&& offer) {
    mService = service;
    mHasSearched = true;
    mCapabilities = std::move(offer.capabilities);
    mFeatures = std::move(offer.features);
    Event event;
    event.kind = Event::Kind::Connected;
    event.value = mPeer.process;
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
        mToConnect.notify_one();
        return;
    }
    dead = mService;
    mService.clear();
    mDiedAt = Clock::now();
    mReach = Reach::NoService;
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
    mToConnect.notify_one();
}

Diagnosis Session::diagnose(Clock::time_point deadline) {
    if (Diagnosis seen = mPort->look(); seen.reach != Reach::Connected && !isConnected()) {
        return seen;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    if (!waitUntilKnown(lock, std::min(deadline, mStageBegun + kPrompt))) {
        Diagnosis seen = diagnose(lock);
        if (seen.manager.isStopped || seen.service.isStopped) {
            return seen;
        }
        waitUntilKnown(lock, std::min(deadline, mStageBegun + kBusyLimit));
    }
    if (mIsInside) {
        mChanged.wait_until(lock, std::min(deadline, mInsideSince + kPrompt),
                            [this] { return !mIsInside; });
    }
    const auto refused = std::min(deadline, Clock::now() + kToRefuse);
    mChanged.wait_until(lock, refused,
                        [this] { return mOpenFence == 0 || mService == nullptr || mIsStuck; });
    return diagnose(lock);
}

/// How far the way to the service goes, or how far it went last.
bool Session::waitUntilKnown(std::unique_lock<std::mutex>& lock, Clock::time_point deadline) {
    return mChanged.wait_until(lock, deadline, [this] {
        return mService != nullptr || mHasSearched || mStage == Stage::Loading ||
               mStage == Stage::AskingAgain;
    });
}

/// Lets go of the lock while it looks.
Diagnosis Session::diagnose(std::unique_lock<std::mutex>& lock) const {
    const Peer service = mPeer;
    lock.unlock();
    Diagnosis seen = mPort->look();
    seen.service = service;
    seen.service.isStopped = isStopped(service.process);
    lock.lock();
    seen.takesAnyPause = mTakesAnyPause;
    if (mService != nullptr) {
        const bool isSilent = mIsInside && Clock::now() >= mInsideSince + kPrompt;
        seen.reach = mIsStuck || isSilent ? Reach::ServiceSilent : Reach::Connected;
    } else if (seen.reach == Reach::Connected) {
        seen.reach = reachOfStage(seen);
        if (seen.reach == Reach::NoManager && seen.transport == "socket") {
            seen.reach = Reach::NoService;  // it has come since the last search
        }
    }
    return seen;
}

Reach Session::reachOfStage(const Diagnosis& seen) const {
    const bool isAtManager = mStage == Stage::Searching || mStage == Stage::Waiting;
    const bool isStopped = isAtManager ? seen.manager.isStopped : seen.service.isStopped;
    const auto end = mStageBegun + (isStopped ? Clock::duration(kPrompt) : kBusyLimit);
    const bool isPrompt = Clock::now() < end;
    if (mStage == Stage::Loading || (mStage == Stage::AskingAgain && isPrompt)) {
        return Reach::Loading;
    }
    if (mHasSearched && (mStage == Stage::Waiting || isPrompt)) {
        return mReach;
    }
    return isAtManager ? Reach::ManagerSilent : Reach::ServiceSilent;
}

/// Why there is no connection, in the words of what it waits for.
Error Session::unavailable(std::unique_lock<std::mutex>& lock) const {
    const Diagnosis seen = diagnose(lock);
    const Error error = seen.whyNot();
    return error.status == Status::Ok ? Error{Status::TimedOut, describe(Status::TimedOut)} : error;
}

}  // namespace voxtrel
