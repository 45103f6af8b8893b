// SPDX-License-Identifier: Apache-2.0
// What the queue asks a service that tells of nothing for a while.
#include "voxtrel/session/SpeechQueue.h"

#include <algorithm>

namespace voxtrel {

SpeechQueue::Clock::time_point SpeechQueue::nextMoment() const {
    if (mOwesFence) {
        return mLast;
    }
    if (mInFlight.empty()) {
        const bool isWaiting = mPartlySent != nullptr || !mWaiting.isEmpty();
        return isWaiting && mClosed > mLast ? mClosed : Clock::time_point::max();
    }
    return mUnanswered > 1 ? mAsked + (mHasAnswered ? kQuiet : kFenceTimeout) : mLast + mProbeDelay;
}

std::optional<SpeechRequest> SpeechQueue::probe(Clock::time_point now) {
    const bool isToBeChecked = mUnanswered > 1 && !mOwesFence;
    if (now < nextMoment() || isToBeChecked || (mInFlight.empty() && !mOwesFence)) {
        return std::nullopt;
    }
    SpeechRequest request;
    request.number = newNumber();
    if (mOwesFence) {
        mOwesFence = false;
        ++mUnanswered;
        mAsked = now;
        request.kind = SpeechRequest::Kind::Fence;
        return request;
    }
    InFlight sent;
    sent.number = request.number;
    sent.isProbe = true;
    mInFlight.push_back(std::move(sent));
    mProbeDelay =
        mProbeDelay < kFenceTimeout ? kFenceTimeout : std::min(2 * mProbeDelay, kLongestQuiet);
    mLast = now;
    mOwesFence = true;
    request.kind = SpeechRequest::Kind::Probe;
    return request;
}

bool SpeechQueue::needsLivenessCheck(Clock::time_point now) const {
    return mUnanswered > 1 && !mOwesFence && !mInFlight.empty() && now >= nextMoment();
}

bool SpeechQueue::askOnceMore() {
    if (mHasAnswered) {
        return false;
    }
    mHasAnswered = mOwesFence = true;
    return true;
}

}  // namespace voxtrel
