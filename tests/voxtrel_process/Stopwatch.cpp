// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrel_process/Stopwatch.h"

namespace voxtrel_test {
namespace {

constexpr std::chrono::milliseconds kTick(10);
constexpr std::chrono::seconds kSlack(1);

/// A call takes its turn more often than a thread that only waits: for locks, and for others.
constexpr int kTurns = 3;

}  // namespace

Stopwatch::Stopwatch() = default;

Stopwatch::~Stopwatch() {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsEnded = true;
        mEnded.notify_one();
    }
    mWaiter.join();
}

void Stopwatch::wait() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (!mIsEnded) {
        const Clock::time_point begun = Clock::now();
        if (!mEnded.wait_for(lock, kTick, [this] { return mIsEnded; })) {
            mLateness += Clock::now() - begun - kTick;
        }
    }
}

bool Stopwatch::isWithin(std::chrono::milliseconds time) {
    const std::lock_guard<std::mutex> lock(mMutex);
    return Clock::now() - mBegun <= time + kSlack + kTurns * mLateness;
}

}  // namespace voxtrel_test
