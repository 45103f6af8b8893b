// SPDX-License-Identifier: Apache-2.0
// The thread of a session that makes its requests.
#include <new>

#include "vocabulary/Status.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/session/Wire.h"

namespace voxtrel {
namespace {

/// The last events of a service that has died come on other threads than the news of its end.
constexpr std::chrono::milliseconds kLastEvents(250);

/// The clock of the system's waits has an end.
constexpr std::chrono::hours kLongest(1);

/// Until memory that has run out is asked for again.
constexpr std::chrono::milliseconds kScarcity(50);

}  // namespace

void Session::send() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (!mIsEnding) {
        while (!mIsEnding) {
            try {
                if (!sendOne(lock)) {
                    mWakeAt = nextMoment();
                    mToSend.wait_until(lock, mWakeAt);
                }
            } catch (const std::bad_alloc&) {
                // What could not be sent is found lost, as if the runtime had lost it.
                mToSend.wait_for(lock, kScarcity);
            }
        }
        leaveService(lock);  // a new client may join meanwhile
    }
    finish(mSender);
}

void Session::deregister(std::unique_lock<std::mutex>& lock) {
    try {
        while (mService != nullptr && sendCall(lock)) {
        }
        if (mService != nullptr) {
            callService(lock,
                        [pid = mPid](Service& service) { return service.deregisterCallback(pid); });
        }
    } catch (const std::bad_alloc&) {
        // The service notices when the process ends.
    }
}

void Session::leaveService(std::unique_lock<std::mutex>& lock) {
    deregister(lock);
    android::sp<Service> left = mService;
    mService.clear();
    mLockHolder = 0;
    mOwesUnlock = false;
    mDiedAt.reset();
    mSpeech.lose(Status::NoService);
    if (mIsEnding) {
        failCalls(TTS::STATUS_NO_SERVICE);
    }
    if (left != nullptr) {
        mStage = Stage::Waiting;
        Event event;
        event.kind = Event::Kind::Disconnected;
        tellAll(event);
    }
    lock.unlock();
    left.clear();
    lock.lock();
    mToConnect.notify_one();
}

/// False when there is nothing to do now.
bool Session::sendOne(std::unique_lock<std::mutex>& lock) {
    const Clock::time_point now = Clock::now();
    if (mDiedAt && now >= endOfLife()) {
        endLife();
        return true;
    }
    if (mService == nullptr) {
        return false;
    }
    if (sendCall(lock)) {
        return true;
    }
    if (holdsSpeech()) {
        return false;
    }
    if (mSpeech.needsLivenessCheck(now)) {
        checkLiveness(lock);
        return true;
    }
    const std::optional<SpeechRequest> request = mSpeech.next(now);
    if (request) {
        transmit(lock, *request);
    }
    return request.has_value();
}

/// Makes the next request that is no speech, if there is one.
bool Session::sendCall(std::unique_lock<std::mutex>& lock) {
    postFlush();
    if (mCalls.empty()) {
        postUnlock();
    }
    if (mCalls.empty()) {
        return false;
    }
    runCall(lock);
    return true;
}

/// What the service has yet to say about the speech before decides what becomes of the next.
bool Session::holdsSpeech() const {
    return mDiedAt || !mFences.empty();
}

Session::Clock::time_point Session::endOfLife() const {
    return mSpeech.isAnythingInFlight() ? *mDiedAt + kLastEvents : *mDiedAt;
}

Session::Clock::time_point Session::nextMoment() const {
    Clock::time_point moment = Clock::now() + kLongest;
    if (mDiedAt) {
        moment = std::min(moment, endOfLife());
    } else if (mService != nullptr && !holdsSpeech()) {
        moment = std::min(moment, mSpeech.nextMoment());
    }
    return moment;
}

int Session::callService(std::unique_lock<std::mutex>& lock, const Work& work) {
    android::sp<Service> service = mService;
    mIsInside = true;
    mInsideSince = Clock::now();
    lock.unlock();
    const auto comeBack = [&] {
        service.clear();
        lock.lock();
        mIsInside = false;
        mIsStuck = false;
        mChanged.notify_all();
    };
    int status = 0;
    try {
        status = work(*service);
    } catch (...) {
        comeBack();
        throw;
    }
    comeBack();
    return status;
}

void Session::runCall(std::unique_lock<std::mutex>& lock) {
    const std::shared_ptr<Call> call = mCalls.front();
    mCalls.pop_front();
    try {
        call->status = callService(lock, call->work);
    } catch (const std::bad_alloc&) {
        call->isOutOfMemory = true;
        if (call->owe != nullptr) {
            call->owe();
            throw;
        }
    }
    call->isDone = true;
}

void Session::transmit(std::unique_lock<std::mutex>& lock, const SpeechRequest& request) {
    if (request.speech == nullptr) {
        const bool isFence = request.kind == SpeechRequest::Kind::Fence;
        const std::uint32_t length = isFence ? wire::kEndlessPause : 0;
        mOpenFence = isFence ? request.number : mOpenFence;
        mFenceSent = isFence ? Clock::now() : mFenceSent;
        (void)callService(lock, [&](Service& service) {
            return service.silence(mPid, request.number, length, WireSettings::kNotSet);
        });
        return;
    }
    const Speech& speech = *request.speech;
    const Result<WireSettings> checked = toWire(speech.options, *mCapabilities);
    if (!checked) {
        mSpeech.refuse(request, checked.status());
        return;
    }
    const WireSettings& wire = *checked;
    if (speech.pauseMs) {
        (void)callService(lock, [&](Service& service) {
            return service.silence(mPid, request.number, *speech.pauseMs, wire.mediaVolume);
        });
    } else {
        const std::string text = speech.text.substr(request.begin.bytes, request.bytes);
        (void)callService(lock, [&](Service& service) {
            return service.say(mPid, request.number, text, wire.speed, wire.volume, wire.voice,
                               wire.mediaVolume, wire.speechVolume, wire.pitch, wire.language);
        });
    }
    mChanged.notify_all();
}

void Session::endLife() {
    mDiedAt.reset();
    mSpeech.lose(Status::NoService);
}

/// Asked twice for an event, the service sent none. One that is stopped may still.
void Session::checkLiveness(std::unique_lock<std::mutex>& lock) {
    (void)callService(lock, [](Service& service) { return service.enabled() ? 1 : 0; });
    if (!mDiedAt && mSpeech.needsLivenessCheck(Clock::now()) && !mSpeech.askOnceMore()) {
        mSpeech.lose(Status::Lost);
        mSpeech.oweFlush();
    }
}

/// Nobody waits for its end.
void Session::post(Work work, std::function<void()> owe) {
    const auto call = std::make_shared<Call>();
    call->work = std::move(work);
    call->owe = std::move(owe);
    mCalls.push_back(call);
    mToSend.notify_one();
}

/// It is owed until there is memory to post it.
void Session::postFlush() {
    if (mSpeech.owesFlush()) {
        post([pid = mPid](Service& service) { return service.stopAndFlush(pid, wire::kFlushOwn); },
             [this] { mSpeech.oweFlush(); });
        mSpeech.takeFlush();
    }
}

void Session::failCalls(int status) {
    for (const auto& call : mCalls) {
        call->status = status;
        call->isDone = true;
    }
    mCalls.clear();
}

}  // namespace voxtrel
