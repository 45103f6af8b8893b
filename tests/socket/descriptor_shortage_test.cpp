// SPDX-License-Identifier: Apache-2.0
// A process that has used up its descriptors cannot take what comes with a message: that call
// fails, and no other.
#include <gtest/gtest.h>

#include <string>

#include "tests/platform/ProbeTest.h"

namespace {

using android::FAILED_TRANSACTION;
using android::IBinder;
using android::OK;
using android::sp;
using android::status_t;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

status_t keep(const sp<IBinder>& node, uint32_t flags = 0) {
    Call call;
    call.data.writeStrongBinder(probe::makeNode());
    return call.to(node, probe::kKeep, flags);
}

status_t sendLarge(const sp<IBinder>& node) {
    Call call;
    (void)call.data.writeInplace(300000);
    return call.to(node, probe::kAdd);
}

// Starves the node's process of descriptors, and feeds it when it is told to: this process has a
// proxy and sockets of its own.
const voxtrel_test::Role kStarver("starver", [](const voxtrel_test::Arguments&) {
    const sp<IBinder> node = probe::find();
    Call call;
    voxtrel_test::tell(std::to_string(call.to(node, probe::kStarve)));
    (void)voxtrel_test::hear();
    voxtrel_test::tell(std::to_string(call.to(node, probe::kFeed)));
    (void)voxtrel_test::hear();
    return 0;
});

using AProxyWhoseNodeIsShortOfDescriptors = probe::ProbeTest;

TEST_F(AProxyWhoseNodeIsShortOfDescriptors, FailsInThatCallAndNoOther) {
    EXPECT_EQ(OK, probe::note(mNode, 1, 0));
    ASSERT_EQ(0, probe::ask(mNode, probe::kStarve));
    EXPECT_EQ(FAILED_TRANSACTION, keep(mNode));
    EXPECT_EQ(FAILED_TRANSACTION, sendLarge(mNode));
    EXPECT_EQ(OK, keep(mNode, IBinder::FLAG_ONEWAY)) << "nobody waits for its status";
    EXPECT_EQ(OK, probe::note(mNode, 1, 1));
    EXPECT_EQ(OK, mNode->pingBinder());
    ASSERT_EQ(0, probe::ask(mNode, probe::kFeed));
    EXPECT_EQ(OK, keep(mNode));
    EXPECT_EQ(OK, sendLarge(mNode));
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 2; }));
}

TEST_F(AProxyWhoseNodeIsShortOfDescriptors, IsToldWhenTheReplyCannotBeMade) {
    // Also because the undefined-behaviour sanitizer wants descriptors when it first sees a class.
    Call made;
    ASSERT_EQ(OK, made.to(mNode, probe::kMake));
    made.reply.freeData();
    ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
    ASSERT_EQ(0, probe::ask(mNode, probe::kStarve));
    const int descriptors = probe::descriptorsOf(mServer.pid());
    EXPECT_EQ(FAILED_TRANSACTION, made.to(mNode, probe::kMake));
    Call big;
    big.data.writeInt32(300000);
    EXPECT_EQ(FAILED_TRANSACTION, big.to(mNode, probe::kBig));
    EXPECT_EQ(OK, mNode->pingBinder());
    EXPECT_EQ(descriptors, probe::descriptorsOf(mServer.pid())) << "the connection is kept";
    ASSERT_EQ(0, probe::ask(mNode, probe::kFeed));
    EXPECT_EQ(OK, made.to(mNode, probe::kMake));
    EXPECT_EQ(OK, big.to(mNode, probe::kBig));
    EXPECT_EQ(300000U, big.reply.dataSize());
}

TEST_F(AProxyWhoseNodeIsShortOfDescriptors, OpensItsSocketAnewWhenTheFirstWasNotTaken) {
    ChildProcess starver = ChildProcess::asRole("starver");
    ASSERT_EQ("0", starver.readLine());
    // The first may be sent before the owner finds that it cannot take the socket.
    (void)probe::note(mNode, 1, 0);
    ASSERT_TRUE(eventually([this] { return probe::note(mNode, 1, 0) == FAILED_TRANSACTION; }));
    EXPECT_EQ(FAILED_TRANSACTION, mNode->pingBinder());
    EXPECT_TRUE(mNode->isBinderAlive());
    ASSERT_EQ("0", starver.ask("feed"));
    EXPECT_EQ(OK, mNode->pingBinder());
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(OK, probe::note(mNode, 1, i));
    }
    EXPECT_TRUE(eventually([&] { return probe::ask(mNode, probe::kNotes) == 100; }));
}

TEST_F(AProxyWhoseNodeIsShortOfDescriptors, HasAReplyLostWhenItIsShortItself) {
    EXPECT_EQ(OK, mNode->pingBinder());
    {
        const probe::Starvation starvation;
        Call made;
        EXPECT_EQ(FAILED_TRANSACTION, made.to(mNode, probe::kMake));
        EXPECT_EQ(OK, mNode->pingBinder());
        EXPECT_EQ(OK, probe::note(mNode, 1, 0));
    }
    Call made;
    EXPECT_EQ(OK, made.to(mNode, probe::kMake));
    EXPECT_TRUE(made.reply.readStrongBinder() != nullptr);
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 1; }))
        << "what nobody received is let go";
}

}  // namespace
