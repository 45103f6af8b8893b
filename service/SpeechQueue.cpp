// SPDX-License-Identifier: Apache-2.0
#include "service/SpeechQueue.h"

#include <algorithm>
#include <utility>

#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

Status SpeechQueue::roomFor(const Utterance& utterance) const {
    if (mClosed) {
        return STATUS_SHUTDOWN;
    }
    const auto found = mShares.find(utterance.pid);
    const Share share = found == mShares.end() ? Share{} : found->second;
    const bool fits =
        mWaiting.size() + mDropped.size() < mLimits.clients * mLimits.utterancesPerClient &&
        share.utterances < mLimits.utterancesPerClient &&
        mTextBytes + utterance.text.size() <= mLimits.clients * mLimits.textPerClient &&
        share.textBytes + utterance.text.size() <= mLimits.textPerClient;
    return fits ? STATUS_OK : STATUS_QUEUE_FULL;
}

void SpeechQueue::account(const Utterance& utterance) {
    Share& share = mShares[utterance.pid];
    ++share.utterances;
    share.textBytes += utterance.text.size();
    mTextBytes += utterance.text.size();
}

void SpeechQueue::discount(const Utterance& utterance) {
    mTextBytes -= utterance.text.size();
    const auto found = mShares.find(utterance.pid);
    if (--found->second.utterances == 0) {
        mShares.erase(found);
        return;
    }
    found->second.textBytes -= utterance.text.size();
}

Status SpeechQueue::push(Utterance utterance) {
    {
        const MutexLock lock(mMutex);
        const Status status = roomFor(utterance);
        if (status != STATUS_OK) {
            return status;
        }
        account(utterance);
        mWaiting.push_back(std::move(utterance));
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
        mDropped.push_back({utterance.pid, utterance.id, reason});
    }
    mChanged.notify_one();
    return STATUS_OK;
}

void SpeechQueue::dropLocked(std::optional<uint32_t> pid, int32_t status, bool report) {
    const auto isMeant = [&](uint32_t owner) { return !pid || *pid == owner; };
    const auto kept =
        std::stable_partition(mWaiting.begin(), mWaiting.end(),
                              [&](const Utterance& utterance) { return !isMeant(utterance.pid); });
    for (auto dropped = kept; dropped != mWaiting.end(); ++dropped) {
        discount(*dropped);
        if (report) {
            mDropped.push_back({dropped->pid, dropped->id, status});
        }
    }
    mWaiting.erase(kept, mWaiting.end());
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

void SpeechQueue::forget(uint32_t pid) {
    const MutexLock lock(mMutex);
    dropLocked(pid, STATUS_OK, false);
}

bool SpeechQueue::hasWork() const {
    return !mWaiting.empty() || !mDropped.empty();
}

bool SpeechQueue::wait(Work& work) {
    MutexLock lock(mMutex);
    while (!hasWork() && !mClosed) {
        lock.wait(mChanged);
    }
    work.dropped = std::exchange(mDropped, {});
    work.next.reset();
    if (!mWaiting.empty()) {
        discount(mWaiting.front());
        work.next = std::move(mWaiting.front());
        mWaiting.pop_front();
        mSoundingPid = work.next->pid;
        mCancelled.clear();
    }
    return work.next.has_value() || !work.dropped.empty();
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
    return mWaiting.size();
}

std::optional<std::chrono::steady_clock::time_point> SpeechQueue::idleSince() const {
    const MutexLock lock(mMutex);
    const bool idle = !hasWork() && !mSoundingPid.has_value();
    return idle ? std::optional(mLastWork) : std::nullopt;
}

}  // namespace voxtreld
