// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Heartbeat.h"

#include <algorithm>

namespace soak {
namespace {

Heartbeat::Clock::duration beyond(Heartbeat::Clock::duration gap, Heartbeat::Clock::duration beat) {
    return std::max(gap - beat, Heartbeat::Clock::duration(0));
}

}  // namespace

Heartbeat::Heartbeat() : mThread([this] { beat(); }) {}

Heartbeat::~Heartbeat() {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsEnding = true;
    }
    mEnd.notify_one();
    mThread.join();
}

Heartbeat::Clock::duration Heartbeat::missed() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mMissed + beyond(Clock::now() - mLast, kBeat);
}

void Heartbeat::beat() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (!mIsEnding) {
        mEnd.wait_for(lock, kBeat);
        const Clock::time_point now = Clock::now();
        mMissed += beyond(now - mLast, kBeat);
        mLast = now;
    }
}

}  // namespace soak
