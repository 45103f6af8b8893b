// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/UtteranceState.h"

namespace voxtrel {

Outcome UtteranceState::outcome() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mOutcome;
}

Position UtteranceState::position() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mPosition;
}

Outcome UtteranceState::waitUntil(Clock::time_point deadline) const {
    std::unique_lock<std::mutex> lock(mMutex);
    mEnded.wait_until(lock, deadline, [this] { return !mOutcome.isPending(); });
    return mOutcome;
}

Outcome UtteranceState::wait() const {
    std::unique_lock<std::mutex> lock(mMutex);
    mEnded.wait(lock, [this] { return !mOutcome.isPending(); });
    return mOutcome;
}

void UtteranceState::moveTo(Position position) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mPosition = position;
}

void UtteranceState::end(const Outcome& outcome) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mOutcome.isPending()) {
        mOutcome = outcome;
        mEnded.notify_all();
    }
}

}  // namespace voxtrel
