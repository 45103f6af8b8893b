// SPDX-License-Identifier: Apache-2.0
// One-way calls that nobody takes: how many find room in a socket, and how long one waits for it.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using android::status_t;
using probe::Call;
using probe::note;
using voxtrel_test::eventually;

using AOneWayCall = probe::ProbeTest;

// Sends until there is steadily no room: on a busy machine one refusal may only mean that the
// receiver did not get to read. Returns how many were taken.
int fill(const sp<IBinder>& node) {
    constexpr int kSteadily = 3;
    int taken = 0;
    for (int refused = 0; refused < kSteadily && taken < 1000000;) {
        const status_t status = note(node, 1, taken);
        taken += status == OK ? 1 : 0;
        refused = status == OK ? 0 : refused + 1;
    }
    return taken;
}

// The shortest of several, since a busy machine makes each take longer.
std::chrono::duration<double> shortestFailure(const sp<IBinder>& node, int number) {
    using Clock = std::chrono::steady_clock;
    std::chrono::duration<double> shortest = std::chrono::hours(1);
    for (int i = 0; i < 8; ++i) {
        const auto start = Clock::now();
        EXPECT_EQ(android::FAILED_TRANSACTION, note(node, 1, number));
        shortest = std::min<std::chrono::duration<double>>(shortest, Clock::now() - start);
    }
    return shortest;
}

TEST_F(AOneWayCall, FailsAfterABoundedWaitWhenNobodyTakesIt) {
    Call block;
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    const int taken = fill(mNode);
    EXPECT_GT(taken, 100);
    const auto failure = shortestFailure(mNode, taken);
    EXPECT_GE(failure.count(), 0.09);
    EXPECT_LT(failure.count(), 0.18);
    EXPECT_EQ(OK, mNode->pingBinder());
    // What was taken is not lost, and the caller may go on.
    probe::ask(mNode, probe::kUnblock);
    EXPECT_TRUE(eventually([this, taken] { return probe::ask(mNode, probe::kNotes) == taken; }));
    EXPECT_EQ(OK, note(mNode, 1, taken));
}

// What a socket takes before its sender has to wait, as it is made on this machine.
size_t socketBuffer() {
    int pair[2] = {-1, -1};
    int bytes = 0;
    socklen_t size = sizeof(bytes);
    EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair));
    EXPECT_EQ(0, getsockopt(pair[0], SOL_SOCKET, SO_SNDBUF, &bytes, &size));
    close(pair[0]);
    close(pair[1]);
    return static_cast<size_t>(bytes);
}

TEST_F(AOneWayCall, CostsLittleMemoryWhileNobodyTakesIt) {
    Call block;
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    const long before = probe::residentKiB(mServer.pid());
    status_t status = OK;
    size_t taken = 0;
    while (status == OK) {
        Call large;
        large.data.writeInplace(520192);
        status = large.to(mNode, probe::kNote, IBinder::FLAG_ONEWAY);
        taken += status == OK ? 1 : 0;
    }
    EXPECT_EQ(android::FAILED_TRANSACTION, status);
    EXPECT_LT(probe::residentKiB(mServer.pid()) - before, 16 * 1024);
    // One is in the queue; of each of those that wait in the socket 32 KiB count there.
    EXPECT_LE(taken, 2 + socketBuffer() / 32768 + 1);
    EXPECT_TRUE(eventually([this] {
        probe::ask(mNode, probe::kUnblock);
        return probe::ask(mNode, probe::kBlocked) == 0;
    }));
}

}  // namespace
