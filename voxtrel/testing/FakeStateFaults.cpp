// SPDX-License-Identifier: Apache-2.0
// What a test does with a fake service.
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"
#include "voxtrel/Deadline.h"
#include "voxtrel/testing/FakeState.h"

namespace voxtrel::testing {

std::vector<std::string> FakeState::spoken() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mSpoken;
}

bool FakeState::waitForSpoken(std::size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_until(lock, deadlineAfter(timeout),
                               [&] { return mSpoken.size() >= count; });
}

std::vector<std::string> FakeState::requests() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mRequests;
}

void FakeState::hold(bool isHeld) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsHeld = isHeld;
    mChanged.notify_all();
}

void FakeState::freeze(bool isFrozen) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsFrozen = isFrozen && mIsAlive;
    mChanged.notify_all();
}

void FakeState::answerAfter(std::chrono::milliseconds delay) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mDelay = delay;
}

void FakeState::refuseNext(Status why) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mRefusal = why;
}

void FakeState::loseNextRequest() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mLosesRequest = true;
}

void FakeState::loseNextEvent(Event::Kind kind) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mLosesStarted = mLosesStarted || kind == Event::Kind::Started;
    mLosesWord = mLosesWord || kind == Event::Kind::Word;
    mLosesEnded = mLosesEnded || kind == Event::Kind::Ended;
}

void FakeState::die() {
    std::function<void()> died;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!mIsAlive) {
            return;
        }
        mIsAlive = mIsFrozen = mIsHeld = mIsEnding = false;
        mInbox.clear();
        mSpeech.clear();
        mOutbox.clear();
        mClient.clear();
        mHolder = 0;
        died = std::move(mDied);
        mDied = nullptr;
        mChanged.notify_all();
    }
    if (died) {
        died();
    }
}

void FakeState::shutDown() {
    {
        std::unique_lock<std::mutex> lock(mMutex);
        if (!mIsAlive) {
            return;
        }
        const std::uint64_t life = mLife;
        mIsFrozen = false;
        mIsEnding = true;
        drop(TTS::STATUS_SHUTDOWN);
        mChanged.wait(lock, [&] {
            const bool isDone = mInbox.empty() && mOutbox.empty() && !mIsTelling;
            return isDone || !mIsAlive || mLife != life;
        });
        if (mLife != life) {
            return;
        }
    }
    die();
}

void FakeState::comeBack() {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!mIsAlive) {
        ++mLife;
        mIsAlive = true;
        mSettings = FakeSettings();
    }
}

void FakeState::stopByAnother() {
    const std::lock_guard<std::mutex> lock(mMutex);
    drop(TTS::STATUS_OK);
}

void FakeState::setHolder(std::uint32_t process) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mHolder = process;
    tellState(TTS::STATE_LOCK, process);
}

void FakeState::unlockByAnother() {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mHolder != 0 && mHolder != mPid) {
        mHolder = 0;
        tellState(TTS::STATE_LOCK, 0);
    }
}

}  // namespace voxtrel::testing
