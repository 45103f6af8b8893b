// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

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
    const int kCalls = voxtrel_test::repeats(100000);
    std::vector<ChildProcess> callers;
    for (int i = 0; i < kCallers; ++i) {
        callers.push_back(
            ChildProcess::asRole("noter", {std::to_string(i), std::to_string(kCalls)}));
    }
    for (ChildProcess& caller : callers) {
        EXPECT_EQ(std::to_string(kCalls), caller.readLine());
        EXPECT_EQ(0, caller.wait());
    }
    EXPECT_TRUE(eventually([&] { return probe::ask(mNode, probe::kNotes) == kCallers * kCalls; }));
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
    const int kCalls = voxtrel_test::repeats(2000);
    for (int i = 0; i < kCalls; i += 2) {
        ASSERT_EQ(OK, noteUntilTaken(mNode, 9, i));
        std::async(std::launch::async, [this, i] {
            EXPECT_EQ(OK, noteUntilTaken(mNode, 9, i + 1));
        }).get();
    }
    EXPECT_TRUE(eventually([&] { return probe::ask(mNode, probe::kNotes) == kCalls; }));
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

}  // namespace
