// SPDX-License-Identifier: Apache-2.0
// How soon a death is known to those who call.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"

namespace {

using android::DEAD_OBJECT;
using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kRounds = 20;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double since(Clock::time_point begin) {
    return Milliseconds(Clock::now() - begin).count();
}

using TheNewsOfADeath = probe::ProbeTest;

// Beside the end of a plain pipe of the same victim, so that a busy machine slows down both.
TEST_F(TheNewsOfADeath, WakesABlockedCallerHardlyLaterThanTheEndOfAPipe) {
    std::vector<double> pipes;
    std::vector<double> calls;
    for (int round = 0; round < kRounds; ++round) {
        ChildProcess victim = ChildProcess::asRole("server", {"victim"});
        ASSERT_EQ("ready", victim.readLine());
        const sp<IBinder> node = probe::find("victim");
        auto caller = std::async(std::launch::async, [node] {
            Call call;
            EXPECT_EQ(DEAD_OBJECT, call.to(node, probe::kBlock));
            return Clock::now();
        });
        ASSERT_TRUE(eventually([&] { return probe::ask(node, probe::kBlocked) == 1; }));
        const auto begin = Clock::now();
        victim.kill(SIGKILL);
        EXPECT_EQ("", victim.readLine());
        pipes.push_back(since(begin));
        calls.push_back(Milliseconds(caller.get() - begin).count());
    }
    EXPECT_LT(median(calls), 10 * median(pipes) + 20);
    RecordProperty("pipe_ms", std::to_string(median(pipes)));
    RecordProperty("call_ms", std::to_string(median(calls)));
}

// A hundred milliseconds is how long a sender waits for one that lives.
TEST_F(TheNewsOfADeath, ReachesThoseWhoCallTheDeadWithoutAWait) {
    for (const bool called : {false, true}) {
        for (const uint32_t flags : {uint32_t{0}, uint32_t{IBinder::FLAG_ONEWAY}}) {
            ChildProcess victim = ChildProcess::asRole("server", {"victim"});
            ASSERT_EQ("ready", victim.readLine());
            std::vector<sp<IBinder>> nodes;
            for (int i = 0; i < kRounds; ++i) {
                Call make;
                ASSERT_EQ(OK, make.to(probe::find("victim"), probe::kMake));
                nodes.push_back(make.reply.readStrongBinder());
                ASSERT_TRUE(!called || nodes.back()->pingBinder() == OK);
            }
            victim.killNow();
            std::vector<double> times;
            for (const sp<IBinder>& node : nodes) {
                const auto begin = Clock::now();
                Call call;
                EXPECT_EQ(DEAD_OBJECT, call.to(node, probe::kAdd, flags));
                EXPECT_EQ(DEAD_OBJECT, call.to(node, probe::kAdd, flags));
                times.push_back(since(begin));
            }
            EXPECT_LT(median(times), 50) << (called ? "known" : "new") << " " << flags;
        }
    }
}

}  // namespace
