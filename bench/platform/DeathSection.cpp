// SPDX-License-Identifier: Apache-2.0
#include <binder/IBinder.h>
#include <signal.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <vector>

#include "bench/platform/Sections.h"
#include "bench/platform/Timing.h"

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kRounds = 15;

class Stopwatch : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>& /*who*/) override {
        const std::lock_guard<std::mutex> held(mLock);
        mStopped = Clock::now();
        mDead = true;
        mChanged.notify_all();
    }
    Clock::time_point stopped() {
        std::unique_lock<std::mutex> held(mLock);
        mChanged.wait(held, [this] { return mDead; });
        return mStopped;
    }

private:
    std::mutex mLock;
    std::condition_variable mChanged;
    Clock::time_point mStopped;
    bool mDead = false;
};

double oneDeath() {
    auto server = voxtrel_test::ChildProcess::asRole("bench-server", {"mortal"});
    if (server.readLine() != "ready") {
        return 0.0;
    }
    const android::sp<IBench> node = findBench("mortal");
    const android::sp<Stopwatch> watch = new Stopwatch();
    node->echo("", 1);
    android::IInterface::asBinder(node)->linkToDeath(watch);
    const auto start = Clock::now();
    server.kill(SIGKILL);
    const std::chrono::duration<double, std::micro> taken = watch->stopped() - start;
    return taken.count();
}

}  // namespace

void deaths(const Setting& setting) {
    const Contest result = contest(kRounds, oneDeath, [&] { return rawRoundTrip(setting); });
    report("death of a service to binderDied, against L", result);
    figure("death_over_L", result.ratio);
}

}  // namespace bench
