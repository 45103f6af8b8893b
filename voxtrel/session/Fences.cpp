// SPDX-License-Identifier: Apache-2.0
// Requests of a session whose effect only an event about a later request proves.
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"
#include "voxtrel/session/CheckedCall.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/session/Wire.h"

namespace voxtrel {

Result<void> Session::stopEverybody(const std::shared_ptr<Mailbox>& by,
                                    Clock::time_point deadline) {
    const auto stop = [this, by](Service& service) {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mSpeech.attributeStop(*by);
        }
        (void)service.stopAndFlush(mPid, wire::kFlushEverything);
    };
    std::unique_lock<std::mutex> lock(mMutex);
    const Fenced done = performFenced(lock, stop, deadline);
    if (done.answer == Answer::Yes) {
        endDropped(lock, mSpeech.dropWaiting(*by));
        // The fence came without it if what this process says goes on.
        const auto isSilent = [this] { return !mSpeech.isSilencedSounding(); };
        if (mChanged.wait_until(lock, deadline, isSilent)) {
            return {};
        }
        mSpeech.revokeStop();
        return errorOf(Answer::Lost);
    }
    if (done.answer != Answer::None) {
        mSpeech.revokeStop();
    }
    return done.sent ? errorOf(done.answer, "stop what others say") : done.sent;
}

Result<void> Session::stopProcess(std::uint32_t process, Clock::time_point deadline) {
    const auto stop = [process](Service& service) {
        (void)service.stopAndFlush(process, wire::kFlushOwn);
    };
    std::unique_lock<std::mutex> lock(mMutex);
    const Fenced done = performFenced(lock, stop, deadline);
    if (!done.sent || done.answer == Answer::Yes) {
        return done.sent;
    }
    return errorOf(done.answer, "stop what that process said, or it has said nothing");
}

/// Makes requests without an answer: an event about the fence behind them proves that they were
/// served. No speech is sent meanwhile. Lets go of the lock.
Session::Fenced Session::performFenced(std::unique_lock<std::mutex>& lock,
                                       std::function<void(Service&)> requests,
                                       Clock::time_point deadline) {
    const std::uint32_t fence = newFence();
    Work work = [pid = mPid, fence, requests = std::move(requests)](Service& service) {
        requests(service);
        (void)service.silence(pid, fence, wire::kEndlessPause, WireSettings::kNotSet);
        return lifeOf(service);  // what else comes of them, events tell
    };
    mFences[fence] = Answer::None;
    lock.unlock();
    Fenced done;
    try {
        done.sent = perform(std::move(work), deadline);
    } catch (...) {
        lock.lock();
        awaitFence(lock, fence, Clock::now());
        throw;
    }
    lock.lock();
    done.answer = awaitFence(lock, fence, done.sent ? deadline : Clock::now());
    return done;
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
    std::unique_lock<std::mutex> lock(mMutex);
    const auto isSent = [&] { return !mSpeech.isWaiting(client) && !mIsInside; };
    if (!mChanged.wait_until(lock, deadline, isSent)) {
        return mService == nullptr ? unavailable(lock) : errorOf(Answer::None);
    }
    if (!mSpeech.isOpen(client)) {
        return {};  // whose outcome is known has been served
    }
    const Fenced done = performFenced(
        lock, [](Service&) {}, deadline);
    if (!done.sent || done.answer == Answer::Yes || done.answer == Answer::Locked) {
        return done.sent;  // a lock refuses the fence as it refuses the speech, which has been told
    }
    return errorOf(done.answer);
}

Result<void> Session::checkEvents(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mChanged.wait_until(lock, deadline, [this] { return mService != nullptr; })) {
        return unavailable(lock);
    }
    if (mEventFence == 0) {
        const std::uint32_t fence = newFence();
        post([pid = mPid, fence](Service& service) {
            return service.silence(pid, fence, wire::kEndlessPause, WireSettings::kNotSet);
        });
        mEventFence = fence;
    }
    // Who waits beside this call may have taken the answer first.
    const std::uint64_t told = mEventsTold;
    const auto isKnown = [&] { return mIsEventTold || mEventsTold != told || mService == nullptr; };
    if (!mChanged.wait_until(lock, deadline, isKnown)) {
        return errorOf(Answer::None);
    }
    if (mService == nullptr) {
        return errorOf(Answer::Gone);
    }
    if (mIsEventTold) {
        mEventFence = 0;
        mIsEventTold = false;
    }
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
    mSpeech.oweFlush();
}

void Session::answerFences(Answer answer) {
    for (auto& [number, fence] : mFences) {
        fence = fence == Answer::None ? answer : fence;
    }
}

}  // namespace voxtrel
