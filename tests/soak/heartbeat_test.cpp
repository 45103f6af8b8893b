// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Heartbeat.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using soak::Heartbeat;

namespace {

constexpr std::chrono::milliseconds kStopped(300);

/// Until it is killed: one that comes before the stop would be lost.
[[noreturn]] void continueAgainAndAgain(pid_t process) {
    for (;;) {
        usleep(std::chrono::microseconds(kStopped).count());
        kill(process, SIGCONT);
    }
}

TEST(AHeartbeat, MissesTheTimeInWhichItsProcessWasStopped) {
    const Heartbeat heartbeat;
    const pid_t self = getpid();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        continueAgainAndAgain(self);
    }
    const auto begun = Heartbeat::Clock::now();
    const auto before = heartbeat.missed();
    raise(SIGSTOP);
    const auto missed = heartbeat.missed() - before;
    const auto taken = Heartbeat::Clock::now() - begun;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_GT(missed, taken / 2);
    EXPECT_LE(missed, taken + std::chrono::seconds(1));  // with what it missed right before
}

}  // namespace
