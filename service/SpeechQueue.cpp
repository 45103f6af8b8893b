// SPDX-License-Identifier: Apache-2.0
#include "service/SpeechQueue.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

Status SpeechQueue::roomFor(const Utterance& utterance) const {
    if (mClosed) {
        return STATUS_SHUTDOWN;
    }
    const auto found = mShares.find(utterance.pid);
    const bool isNew = found == mShares.end();
    const size_t ownUtterances = isNew ? 0 : found->second.waiting.size() + found->second.dropped;
    const size_t ownBytes = isNew ? 0 : found->second.textBytes;
    const bool fits =
        mWaiting + mDropped.size() < mLimits.clients * mLimits.utterancesPerClient &&
        ownUtterances < mLimits.utterancesPerClient &&
        mTextBytes + utterance.text.size() <= mLimits.clients * mLimits.textPerClient &&
        ownBytes + utterance.text.size() <= mLimits.textPerClient;
    return fits ? STATUS_OK : STATUS_QUEUE_FULL;
}

Status SpeechQueue::push(Utterance utterance) {
    {
        const MutexLock lock(mMutex);
        const Status status = roomFor(utterance);
        if (status != STATUS_OK) {
            return status;
        }
        Share& share = mShares[utterance.pid];
        share.user = utterance.user;
        share.textBytes += utterance.text.size();
        mTextBytes += utterance.text.size();
        ++mWaiting;
        share.waiting.push_back({std::move(utterance), ++mAccepted});
    }
    mChanged.notify_one();
    return STATUS_OK;
}

Status SpeechQueue::pushDropped(const Utterance& utterance, int32_t reason) {
    {
        const MutexLock lock(mMutex);
        const Status status = roomFor(utterance);
        if (status != STATUS_OK) {
            return status;
        }
        addDropped(mShares[utterance.pid], utterance, reason);
    }
    mChanged.notify_one();
    return STATUS_OK;
}

void SpeechQueue::addDropped(Share& share, const Utterance& utterance, int32_t status) {
    mDropped.push_back({utterance.pid, utterance.id, status});
    ++share.dropped;
}

/// Turns up to this one are forgotten.
uint64_t SpeechQueue::oldestTurn() const {
    return mTurn > kRememberedTurns ? mTurn - kRememberedTurns : 0;
}

SpeechQueue::Share& SpeechQueue::nextShare() {
    Share* next = nullptr;
    std::pair<uint64_t, uint64_t> first;
    for (auto& [pid, share] : mShares) {
        if (share.waiting.empty()) {
            continue;
        }
        const std::pair rank(std::max(share.lastTurn, oldestTurn()), share.waiting.front().number);
        if (next == nullptr || rank < first) {
            next = &share;
            first = rank;
        }
    }
    return *next;
}

/// The next utterance to speak. The queue must not be empty.
Utterance SpeechQueue::takeNext() {
    Share& share = nextShare();
    Utterance utterance = std::move(share.waiting.front().utterance);
    share.waiting.pop_front();
    share.textBytes -= utterance.text.size();
    share.lastTurn = ++mTurn;
    mTextBytes -= utterance.text.size();
    --mWaiting;
    forgetIdleShares();
    return utterance;
}

void SpeechQueue::forgetIdleShares() {
    for (auto each = mShares.begin(); each != mShares.end();) {
        const Share& share = each->second;
        const bool isIdle =
            share.waiting.empty() && share.dropped == 0 && share.lastTurn <= oldestTurn();
        each = isIdle ? mShares.erase(each) : std::next(each);
    }
}

void SpeechQueue::dropShare(Share& share, int32_t status, bool report) {
    for (const Waiting& each : share.waiting) {
        if (report) {
            addDropped(share, each.utterance, status);
        }
    }
    mWaiting -= share.waiting.size();
    mTextBytes -= share.textBytes;
    share.waiting.clear();
    share.textBytes = 0;
}

void SpeechQueue::dropLocked(std::optional<uint32_t> pid, int32_t status, bool report) {
    const auto isMeant = [&](uint32_t owner) { return !pid || *pid == owner; };
    for (auto& [owner, share] : mShares) {
        if (isMeant(owner)) {
            dropShare(share, status, report);
        }
    }
    forgetIdleShares();
    if (mSoundingPid && isMeant(*mSoundingPid) && !mCancelled) {
        mCancelStatus = status;
        mCancelled.set();
    }
}

void SpeechQueue::drop(std::optional<uint32_t> pid, int32_t status) {
    {
        const MutexLock lock(mMutex);
        dropLocked(pid, status, true);
    }
    mChanged.notify_one();
}

bool SpeechQueue::isOfUser(uint32_t pid, uint32_t user) const {
    const MutexLock lock(mMutex);
    const auto share = mShares.find(pid);
    return share != mShares.end() && share->second.user == user;
}

void SpeechQueue::forget(uint32_t pid) {
    const MutexLock lock(mMutex);
    dropLocked(pid, STATUS_OK, false);
}

bool SpeechQueue::hasWork() const {
    return mWaiting > 0 || !mDropped.empty();
}

bool SpeechQueue::wait(Work& work) {
    MutexLock lock(mMutex);
    while (!hasWork() && !mClosed) {
        lock.wait(mChanged);
    }
    work.dropped = std::exchange(mDropped, {});
    for (auto& [pid, share] : mShares) {
        share.dropped = 0;
    }
    forgetIdleShares();
    work.next.reset();
    if (mWaiting > 0) {
        work.next = takeNext();
        mSoundingPid = work.next->pid;
        mCancelled.clear();
    }
    return work.next.has_value() || !work.dropped.empty();
}

std::vector<SpeechQueue::Dropped> SpeechQueue::takeDropped() {
    const MutexLock lock(mMutex);
    const auto isOthers = [sounding = mSoundingPid](const Dropped& each) {
        return each.pid != sounding;
    };
    const auto kept = std::stable_partition(mDropped.begin(), mDropped.end(), isOthers);
    std::vector<Dropped> taken(mDropped.begin(), kept);
    mDropped.erase(mDropped.begin(), kept);
    for (const Dropped& each : taken) {
        --mShares[each.pid].dropped;
    }
    return taken;
}

std::optional<int32_t> SpeechQueue::finish() {
    const MutexLock lock(mMutex);
    mSoundingPid.reset();
    mLastWork = std::chrono::steady_clock::now();
    return mCancelled ? std::optional<int32_t>(mCancelStatus) : std::nullopt;
}

void SpeechQueue::close() {
    {
        const MutexLock lock(mMutex);
        mClosed = true;
        dropLocked(std::nullopt, STATUS_SHUTDOWN, true);
    }
    mChanged.notify_one();
}

size_t SpeechQueue::waiting() const {
    const MutexLock lock(mMutex);
    return mWaiting;
}

std::optional<std::chrono::steady_clock::time_point> SpeechQueue::idleSince() const {
    const MutexLock lock(mMutex);
    const bool idle = !hasWork() && !mSoundingPid.has_value();
    return idle ? std::optional(mLastWork) : std::nullopt;
}

}  // namespace voxtreld
