// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_PROCESS_STOPWATCH_H
#define VOXTREL_TESTS_VOXTREL_PROCESS_STOPWATCH_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace voxtrel_test {

/// Measures how long something takes on a machine that may be busy: a thread that does nothing but
/// wait shows meanwhile how late the machine is.
class Stopwatch {
public:
    Stopwatch();
    ~Stopwatch();
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

    /// Since the beginning no more has passed than this, a second, and what the machine accounts
    /// for.
    bool isWithin(std::chrono::milliseconds time);

private:
    using Clock = std::chrono::steady_clock;

    void wait();

    const Clock::time_point mBegun = Clock::now();
    std::mutex mMutex;
    std::condition_variable mEnded;
    Clock::duration mLateness{};
    bool mIsEnded = false;
    std::thread mWaiter{[this] { wait(); }};
};

}  // namespace voxtrel_test

#endif
