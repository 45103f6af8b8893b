// SPDX-License-Identifier: Apache-2.0
#include <binder/BpBinder.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using android::wp;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

using AReference = probe::ProbeTest;

void give(const sp<IBinder>& to, const sp<IBinder>& binder) {
    Call call;
    call.data.writeStrongBinder(binder);
    ASSERT_EQ(OK, call.to(to, probe::kKeep));
}

sp<IBinder> take(const sp<IBinder>& from) {
    Call call;
    return call.to(from, probe::kGive) == OK ? call.reply.readStrongBinder() : nullptr;
}

sp<IBinder> make(const sp<IBinder>& where) {
    Call call;
    return call.to(where, probe::kMake) == OK ? call.reply.readStrongBinder() : nullptr;
}

int32_t sum(const sp<IBinder>& node) {
    Call call;
    call.data.writeInt32(3);
    call.data.writeInt32(4);
    return call.to(node, probe::kAdd) == OK ? call.reply.readInt32() : -1;
}

TEST_F(AReference, ThatComesHomeIsTheObjectItself) {
    const sp<IBinder> own = probe::makeNode();
    give(mNode, own);
    const sp<IBinder> back = take(mNode);
    EXPECT_TRUE(back == own);
    EXPECT_TRUE(back->localBinder() != nullptr);
}

TEST_F(AReference, ThatComesTwiceIsTheSameProxy) {
    const sp<IBinder> made = make(mNode);
    give(mNode, made);
    EXPECT_TRUE(take(mNode) == made);
    EXPECT_TRUE(probe::find() == mNode);
}

TEST_F(AReference, GoesHomeAsTheObjectItself) {
    const sp<IBinder> made = make(mNode);
    give(mNode, made);
    Call call;
    call.data.writeStrongBinder(made);
    ASSERT_EQ(OK, call.to(mNode, probe::kIsKept));
    EXPECT_EQ(1, call.reply.readInt32());
}

TEST_F(AReference, ToNobodyIsCarriedAsNull) {
    give(mNode, make(mNode));
    give(mNode, nullptr);
    EXPECT_TRUE(take(mNode) == nullptr);
}

TEST_F(AReference, KeepsItsNodeAliveAndLetsItGo) {
    sp<IBinder> made = make(mNode);
    EXPECT_EQ(1, probe::ask(mNode, probe::kLiving));
    EXPECT_EQ(7, sum(made));
    EXPECT_EQ(1, probe::ask(mNode, probe::kLiving));
    made.clear();
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
}

TEST_F(AReference, IsMadeAnewAfterItsProxyHasGone) {
    sp<IBinder> made = make(mNode);
    give(mNode, made);
    const wp<IBinder> watch = made;
    made.clear();
    EXPECT_TRUE(watch.promote() == nullptr);
    EXPECT_EQ(7, sum(take(mNode)));
}

TEST_F(AReference, InAReplyThatNobodyReadsIsLetGo) {
    EXPECT_EQ(OK, mNode->transact(probe::kMake, android::Parcel(), nullptr));
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
}

TEST_F(AReference, HeldByAProcessThatIsKilledIsLetGo) {
    ChildProcess other = ChildProcess::asRole("server", {"other"});
    ASSERT_EQ("ready", other.readLine());
    sp<IBinder> made = make(mNode);
    give(probe::find("other"), made);
    made.clear();
    EXPECT_EQ(1, probe::ask(mNode, probe::kLiving));
    other.killNow();
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
}

TEST_F(AReference, IsRefusedWhenItCannotBeSent) {
    Call call;
    call.data.writeInplace(2000000);
    call.data.writeStrongBinder(make(mNode));
    EXPECT_EQ(android::FAILED_TRANSACTION, call.to(mNode, probe::kKeep));
    call.data.freeData();
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
}

TEST_F(AReference, ToADeadNodeCanBePassedOnAndIsDead) {
    ChildProcess other = ChildProcess::asRole("server", {"other"});
    ASSERT_EQ("ready", other.readLine());
    const sp<IBinder> middle = probe::find("other");
    const sp<IBinder> made = make(mNode);
    mServer.killNow();
    give(middle, made);
    const sp<IBinder> back = take(middle);
    ASSERT_TRUE(back != nullptr);
    EXPECT_EQ(android::DEAD_OBJECT, back->pingBinder());
}

// One node, three holders: this process, "left" and "right", which got it from "left".
class ThreeHolders : public AReference {
protected:
    void SetUp() override {
        AReference::SetUp();
        ASSERT_EQ("ready", mLeft.readLine());
        ASSERT_EQ("ready", mRight.readLine());
    }

    void letGo(int holder) {
        if (holder == 0) {
            mMade.clear();
        } else {
            Call call;
            call.to(probe::find(holder == 1 ? "left" : "right"), probe::kLetGo);
        }
    }

    ChildProcess mLeft = ChildProcess::asRole("server", {"left"});
    ChildProcess mRight = ChildProcess::asRole("server", {"right"});
    sp<IBinder> mMade;
};

TEST_F(ThreeHolders, KeepANodeUntilTheLastOfThemInWhicheverOrder) {
    std::array<int, 3> order = {0, 1, 2};
    do {
        mMade = make(mNode);
        give(probe::find("left"), mMade);
        give(probe::find("right"), take(probe::find("left")));
        letGo(order[0]);
        letGo(order[1]);
        // A last holder that calls shows that the node is there; then nobody holds it.
        if (order[2] == 0) {
            EXPECT_EQ(7, sum(mMade));
        } else {
            EXPECT_EQ(7, sum(take(probe::find(order[2] == 1 ? "left" : "right"))));
        }
        EXPECT_EQ(1, probe::ask(mNode, probe::kLiving));
        letGo(order[2]);
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(AReference, CostsNothingOnceItHasGone) {
    const auto rounds = [this](int count) {
        for (int i = 0; i < count; ++i) {
            sp<IBinder> made = make(mNode);
            EXPECT_EQ(7, sum(made));
            give(mNode, probe::makeNode());
            give(mNode, nullptr);
        }
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
    };
    rounds(50);
    const int here = probe::descriptors();
    const int there = probe::ask(mNode, probe::kDescriptors);
    rounds(300);
    EXPECT_TRUE(eventually([here] { return probe::descriptors() <= here; }));
    EXPECT_TRUE(
        eventually([this, there] { return probe::ask(mNode, probe::kDescriptors) <= there; }));
}

TEST_F(AReference, IsOneOfAThousandThatAProcessHolds) {
    std::vector<sp<IBinder>> held;
    for (int i = 0; i < 1000; ++i) {
        held.push_back(make(mNode));
        ASSERT_TRUE(held.back() != nullptr) << i;
    }
    EXPECT_EQ(1000, probe::ask(mNode, probe::kLiving));
    EXPECT_EQ(7, sum(held.back()));
    held.clear();
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
}

}  // namespace
