// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_HEARTBEAT_H
#define VOXTREL_TESTS_SOAK_HEARTBEAT_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace soak {

/// Measures how long this process has not run: because it was stopped, or the machine was busy.
/// Called on: any thread.
class Heartbeat {
public:
    using Clock = std::chrono::steady_clock;

    Heartbeat();
    ~Heartbeat();
    Heartbeat(const Heartbeat&) = delete;
    Heartbeat& operator=(const Heartbeat&) = delete;

    /// Since the object was made.
    Clock::duration missed() const;

private:
    static constexpr std::chrono::milliseconds kBeat{20};

    void beat();

    mutable std::mutex mMutex;
    std::condition_variable mEnd;
    bool mIsEnding = false;
    Clock::time_point mLast = Clock::now();
    Clock::duration mMissed{0};
    std::thread mThread;
};

}  // namespace soak

#endif
