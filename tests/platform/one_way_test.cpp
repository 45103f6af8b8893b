// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using android::status_t;
using probe::Call;
using probe::note;
using probe::noteUntilTaken;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

using AOneWayCall = probe::ProbeTest;

// Sends numbered notes, each until it is taken; tells how many there were.
const voxtrel_test::Role kNoter("noter", [](const voxtrel_test::Arguments& arguments) {
    const sp<IBinder> node = probe::find();
    const int caller = std::stoi(arguments[0]);
    const int count = std::stoi(arguments[1]);
    int taken = 0;
    while (taken < count && noteUntilTaken(node, caller, taken) == OK) {
        ++taken;
    }
    voxtrel_test::tell(std::to_string(taken));
    return 0;
});

TEST_F(AOneWayCall, ArrivesInItsCallersOrderAndNeverBesideAnother) {
    constexpr int kCallers = 4;
    constexpr int kCalls = voxtrel_test::repeats(100000);
    std::vector<ChildProcess> callers;
    for (int i = 0; i < kCallers; ++i) {
        callers.push_back(
            ChildProcess::asRole("noter", {std::to_string(i), std::to_string(kCalls)}));
    }
    for (ChildProcess& caller : callers) {
        EXPECT_EQ(std::to_string(kCalls), caller.readLine());
        EXPECT_EQ(0, caller.wait());
    }
    EXPECT_TRUE(
        eventually([this] { return probe::ask(mNode, probe::kNotes) == kCallers * kCalls; }));
    Call notes;
    ASSERT_EQ(OK, notes.to(mNode, probe::kNotes));
    EXPECT_EQ(kCallers * kCalls, notes.reply.readInt32());
    EXPECT_EQ(0, notes.reply.readInt32()) << "out of order";
    EXPECT_EQ(0, notes.reply.readInt32()) << "two at once";
}

TEST_F(AOneWayCall, ArrivesThoughItsCallerHasDied) {
    ChildProcess caller = ChildProcess::asRole("noter", {"1", "200"});
    EXPECT_EQ("200", caller.readLine());
    caller.killNow();
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 200; }));
}

TEST_F(AOneWayCall, ReturnsAtOnceAndLeavesTheReplyEmpty) {
    Call call;
    EXPECT_EQ(OK, call.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    EXPECT_EQ(0U, call.reply.dataSize());
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    probe::ask(mNode, probe::kUnblock);
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 0; }));
}

TEST_F(AOneWayCall, KeepsItsOrderAcrossThreadsThatKnowOfEachOther) {
    constexpr int kCalls = voxtrel_test::repeats(2000);
    for (int i = 0; i < kCalls; i += 2) {
        ASSERT_EQ(OK, noteUntilTaken(mNode, 9, i));
        std::async(std::launch::async, [this, i] {
            EXPECT_EQ(OK, noteUntilTaken(mNode, 9, i + 1));
        }).get();
    }
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == kCalls; }));
    Call notes;
    ASSERT_EQ(OK, notes.to(mNode, probe::kNotes));
    (void)notes.reply.readInt32();
    EXPECT_EQ(0, notes.reply.readInt32()) << "out of order";
}

TEST_F(AOneWayCall, IsNotHeldUpByATwoWayCallOfAnotherThread) {
    auto blocked = std::async(std::launch::async, [this] {
        Call call;
        return call.to(mNode, probe::kBlock);
    });
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    EXPECT_EQ(OK, note(mNode, 1, 0));
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 1; }));
    probe::ask(mNode, probe::kUnblock);
    EXPECT_EQ(OK, blocked.get());
}

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
