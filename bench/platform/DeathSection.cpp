// SPDX-License-Identifier: Apache-2.0
#include <binder/IBinder.h>
#include <signal.h>
#include <sys/socket.h>

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

// Microseconds from the kill to `binderDied`.
double killed(pid_t pid) {
    const android::sp<android::IBinder> node = findService("mortal");
    const android::sp<Stopwatch> watch = new Stopwatch();
    node->pingBinder();
    node->linkToDeath(watch);
    const auto start = Clock::now();
    kill(pid, SIGKILL);
    const std::chrono::duration<double, std::micro> taken = watch->stopped() - start;
    return taken.count();
}

double programsDeath() {
    auto server = voxtrel_test::ChildProcess::asRole("bench-server", {"mortal"});
    return server.readLine() == "ready" ? killed(server.pid()) : 0.0;
}

double rawEndOfFile(Mortals& mortals) {
    const Mortals::Process process = mortals.next();
    char byte = 0;
    return wallTime(1, [&] {
        kill(process.pid, SIGKILL);
        (void)recv(process.socket, &byte, 1, 0);
    });
}

}  // namespace

void deaths(const Setting& setting) {
    const auto limit = [&] { return rawRoundTrip(setting); };
    report("death of a bare process to end-of-file, against L",
           contest(
               kDeathRounds, [&] { return rawEndOfFile(setting.mortals); }, limit));
    const Contest result = contest(
        kDeathRounds,
        [&] { return killed(setting.mortals.nextService(setting.runtime.socket()).pid); }, limit);
    report("death of such a service to binderDied, against L", result);
    report("death of a whole program to binderDied, against L",
           contest(kDeathRounds, programsDeath, limit));
    figure("death_over_L", result.ratio);
}

}  // namespace bench
