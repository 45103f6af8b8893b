// SPDX-License-Identifier: Apache-2.0
// A new proxy of a node while one-way calls through the one before still wait in its sockets.
#include <gtest/gtest.h>

#include "tests/platform/ProbeTest.h"

namespace {

using android::FAILED_TRANSACTION;
using android::IBinder;
using android::OK;
using probe::Call;
using voxtrel_test::eventually;

constexpr int kCaller = 7;

class AProxyOfASlowNode : public probe::ProbeTest {
protected:
    void SetUp() override {
        probe::ProbeTest::SetUp();
        Call block;
        ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
        ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    }
    // Through a proxy of its own.
    void send(int first, int count) {
        mNode.clear();
        mNode = probe::find();
        for (int i = first; i < first + count; ++i) {
            ASSERT_EQ(OK, probe::note(mNode, kCaller, i)) << i;
        }
    }
};

TEST_F(AProxyOfASlowNode, IsNotHeldUpByAFewCallsOfItsPredecessor) {
    send(0, 5);
    send(5, 5);
    send(10, 5);
    EXPECT_EQ(0, probe::ask(mNode, probe::kNotes));
    probe::ask(mNode, probe::kUnblock);
    expectInOrder(15);
}

TEST_F(AProxyOfASlowNode, WaitsForManyCallsOfItsPredecessorForABoundedTime) {
    send(0, 100);
    mNode.clear();
    mNode = probe::find();
    EXPECT_EQ(FAILED_TRANSACTION, probe::note(mNode, kCaller, 100));
    EXPECT_EQ(OK, mNode->pingBinder()) << "a two-way call goes beside";
    probe::ask(mNode, probe::kUnblock);
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 100; }));
    EXPECT_EQ(OK, probe::note(mNode, kCaller, 100));
    expectInOrder(101);
}

TEST_F(AProxyOfASlowNode, IsLetGoWithItsCallsUnderWay) {
    send(0, 100);
    mNode.clear();
    mNode = probe::find();
    probe::ask(mNode, probe::kUnblock);
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 100; }));
    const int descriptors = probe::descriptors();
    for (int i = 100; i < 200; ++i) {
        send(i, 1);
    }
    EXPECT_TRUE(eventually([&] { return probe::descriptors() <= descriptors + 2; }));
    expectInOrder(200);
}

}  // namespace
