// SPDX-License-Identifier: Apache-2.0
// The lock of a session.
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"
#include "voxtrel/session/CheckedCall.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/session/Wire.h"

namespace voxtrel {

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
        return lifeOf(service);
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
    std::unique_lock<std::mutex> guard(mMutex);
    const std::uint32_t holder = mLockHolder;
    if (own.status() != Status::Locked || holder == 0 || holder == mPid) {
        return own.error();
    }
    // Only who means to break it names another process than itself.
    const auto unlock = [holder](Service& service) { (void)service.unlock(holder); };
    const Fenced done = performFenced(guard, unlock, deadline);
    if (!done.sent) {
        return done.sent.error();
    }
    if (mLockHolder != holder) {
        return holder;
    }
    const bool wasServed = done.answer == Answer::Yes || done.answer == Answer::Locked;
    return errorOf(wasServed ? Answer::Refused : done.answer, "free the lock of another process");
}

Result<LockState> Session::lockState(Clock::time_point deadline) {
    // The switch of nothing: a lock is looked at before it is.
    constexpr auto kNoSwitch = static_cast<VOXTRELAPI_GCONF>(15);
    const Result<LockState> state = ask<LockState>(
        [pid = mPid](Service& service, LockState& out) {
            const CheckedCall call = callChecked(
                service, [pid](Service& it) { return it.setEnable2(pid, kNoSwitch, false); });
            const int status = call.status();
            out = status == TTS::STATUS_LOCKED          ? LockState::HeldByAnother
                  : status == TTS::STATUS_BAD_PARAMETER ? LockState::Free
                                                        : LockState::Unknown;
            return call.isLost() ? status : 0;
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
    postFlush();
    if (mOwesUnlock) {
        post([pid = mPid](Service& service) { return service.unlock(pid); },
             [this] { mOwesUnlock = true; });
        mOwesUnlock = false;
    }
}

bool Session::holdsLock(std::uint64_t number) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLockOwner != nullptr && mLock == number && mLockAnswer == Answer::Yes;
}

/// An answer that is awaited is decided by the fence: this may tell of an earlier request.
void Session::onLock(unsigned holder) {
    mLockHolder = holder;
    if (mLockOwner != nullptr && mLockAnswer == Answer::Yes && holder != mPid) {
        mLockAnswer = holder == 0 ? Answer::Gone : Answer::Locked;
        mChanged.notify_all();
    }
}

}  // namespace voxtrel
