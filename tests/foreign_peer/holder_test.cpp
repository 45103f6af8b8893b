// SPDX-License-Identifier: Apache-2.0
// A process of another runtime that holds a node of ours, and gives us nodes of its own.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "tests/foreign_peer/ForeignPeer.h"
#include "tests/platform/Probe.h"
#include "tests/support/Eventually.h"
#include "tests/support/PrivateRuntime.h"

namespace {

using namespace voxtrel_test;

std::unique_ptr<PrivateRuntime> gRuntime;

class AForeignHolder : public testing::Test {
protected:
    static void SetUpTestSuite() {
        gRuntime = std::make_unique<PrivateRuntime>(VOXTREL_SERVICEMANAGER);
    }
    static void TearDownTestSuite() { gRuntime.reset(); }

    void SetUp() override {
        ASSERT_EQ("ready", mServer.readLine());
        mHandle = mHolder.await(probe::kName);
        ASSERT_FALSE(mHandle.empty());
    }

    static std::string call(ForeignPeer& holder, const std::string& handle, probe::Code code,
                            const std::string& rest) {
        return holder.ask("call " + handle + ' ' + std::to_string(code) + ' ' + rest);
    }
    std::string call(probe::Code code, const std::string& rest) {
        return call(mHolder, mHandle, code, rest);
    }

    ChildProcess mServer = ChildProcess::asRole("server");
    ForeignPeer mHolder;
    std::string mHandle;
};

TEST_F(AForeignHolder, HasNothingOfThisRuntime) {
    std::ifstream maps("/proc/" + std::to_string(mHolder.pid()) + "/maps");
    size_t seen = 0;
    for (std::string line; std::getline(maps, line); ++seen) {
        EXPECT_EQ(std::string::npos, line.find("libvoxtrel")) << line;
    }
    EXPECT_GT(seen, 5U);
}

TEST_F(AForeignHolder, PingsTheNodeAndTheServiceManager) {
    EXPECT_EQ("reply", mHolder.ask("call " + mHandle + kPing));
    EXPECT_EQ("reply", mHolder.ask(std::string("call 0") + kPing));
}

TEST_F(AForeignHolder, IsGivenAnObjectThatIsNoneForAnUnknownName) {
    EXPECT_EQ("reply 0", mHolder.askManager(kGetService, "b", "s:unknown"));
    EXPECT_EQ("reply 0", mHolder.askManager(kCheckService, "b", "s:unknown"));
}

TEST_F(AForeignHolder, IsKnownByItsProcessAndUser) {
    EXPECT_EQ("reply " + mHolder.pidItem() + " i:0 i:" + std::to_string(mServer.pid()),
              call(probe::kWho, "0 iii"));
}

TEST_F(AForeignHolder, OfAnotherUserIsKnownByThat) {
    ForeignPeer other = ForeignPeer::ofNobody();
    const std::string handle = other.await(probe::kName);
    EXPECT_EQ("reply " + other.pidItem() + " i:65534 i:" + std::to_string(mServer.pid()),
              call(other, handle, probe::kWho, "0 iii"));
}

TEST_F(AForeignHolder, IsRefusedADescriptorInARequest) {
    EXPECT_EQ("failed", call(probe::kEcho, "0 - d:0"));
    EXPECT_EQ("reply", mHolder.ask("call " + mHandle + kPing));
}

TEST_F(AForeignHolder, GivesNoObjectWithAWeakOne) {
    EXPECT_EQ("reply", call(probe::kKeep, "0 - w:5"));
    EXPECT_EQ("reply 0", call(probe::kGive, "0 b"));
}

TEST_F(AForeignHolder, ReadsTheStatusOfACallThatFails) {
    EXPECT_EQ("status -42", call(probe::kFail, "0 -"));
}

TEST_F(AForeignHolder, IsToldWhereThereIsNoRoom) {
    EXPECT_EQ("failed", call(probe::kEcho, "0 - z:1048576")) << "in our mapping";
    EXPECT_EQ("failed", call(probe::kBig, "0 - i:300000")) << "in its own, for the reply";
    EXPECT_EQ("reply +200000", call(probe::kEcho, "0 - z:200000"));
}

TEST_F(AForeignHolder, MayDieWhileItWaitsForAReply) {
    ForeignPeer dying;
    const std::string handle = dying.await(probe::kName);
    EXPECT_TRUE(dying.begin("call " + handle + ' ' + std::to_string(probe::kBlock) + " 0 -"));
    EXPECT_TRUE(eventually([this] { return call(probe::kBlocked, "0 i") == "reply i:1"; }));
    dying.killNow();
    EXPECT_EQ("reply", call(probe::kUnblock, "0 -"));
    EXPECT_TRUE(eventually([this] { return call(probe::kBlocked, "0 i") == "reply i:0"; }));
}

TEST_F(AForeignHolder, IsToldOfTheDeathWhileItWaitsForAReply) {
    ForeignPeer waiting;
    const std::string handle = waiting.await(probe::kName);
    EXPECT_TRUE(waiting.begin("call " + handle + ' ' + std::to_string(probe::kBlock) + " 0 -"));
    EXPECT_TRUE(eventually([this] { return call(probe::kBlocked, "0 i") == "reply i:1"; }));
    mServer.killNow();
    EXPECT_EQ("dead", waiting.answer());
}

TEST_F(AForeignHolder, SendsOneWayCallsThatArriveInOrder) {
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ("sent", call(probe::kNote, "1 - i:1 i:" + std::to_string(i)));
    }
    EXPECT_TRUE(
        eventually([this] { return call(probe::kNotes, "0 iii") == "reply i:100 i:0 i:0"; }));
}

TEST_F(AForeignHolder, IsCalledBackWhileItWaits) {
    EXPECT_EQ("reply i:7", call(probe::kCallBack, "0 i n:3 i:7"));
    const std::string called =
        "called 3 7 two-way pid " + std::to_string(mServer.pid()) + " uid 0: h:" + mHandle;
    EXPECT_EQ(called + " i:6", mHolder.event("called"));
    EXPECT_EQ(called + " i:4", mHolder.event("called"));
}

TEST_F(AForeignHolder, IsGivenItsOwnNodeAsThat) {
    EXPECT_EQ("reply", call(probe::kKeep, "0 - n:5"));
    EXPECT_EQ("reply i:1", call(probe::kIsKept, "0 i n:5"));
    EXPECT_EQ("reply n:5", call(probe::kGive, "0 b"));
}

TEST_F(AForeignHolder, HasItsNodeBackWhenWeLetGoOfIt) {
    EXPECT_EQ("reply", call(probe::kKeep, "0 - n:5"));
    EXPECT_EQ("node 5 acquired", mHolder.event("node"));
    EXPECT_EQ("reply", call(probe::kLetGo, "0 -"));
    EXPECT_EQ("node 5 released", mHolder.event("node"));
}

TEST_F(AForeignHolder, KeepsANodeOfOursUntilItLetsGo) {
    const std::string found = "reply h:";
    const std::string made = call(probe::kMake, "0 b");
    ASSERT_EQ(0U, made.find(found));
    const std::string handle = made.substr(found.size());
    EXPECT_EQ("reply i:5", call(mHolder, handle, probe::kAdd, "0 i i:2 i:3"));
    EXPECT_EQ("reply i:1", call(probe::kLiving, "0 i"));
    EXPECT_EQ("done", mHolder.ask("release " + handle));
    EXPECT_TRUE(eventually([this] { return call(probe::kLiving, "0 i") == "reply i:0"; }));
}

TEST_F(AForeignHolder, IsMissedWhenItDies) {
    ForeignPeer dying;
    const std::string handle = dying.await(probe::kName);
    EXPECT_EQ("reply", call(dying, handle, probe::kLink, "0 - n:9"));
    EXPECT_EQ("reply i:0", call(probe::kDeaths, "0 i"));
    dying.killNow();
    EXPECT_TRUE(eventually([this] { return call(probe::kDeaths, "0 i") == "reply i:1"; }));
}

TEST_F(AForeignHolder, IsToldOfTheDeathOfOurProcess) {
    EXPECT_EQ("done", mHolder.ask("watch " + mHandle + " 99"));
    mServer.killNow();
    EXPECT_EQ("died 99", mHolder.event("died"));
    EXPECT_EQ("dead", mHolder.ask("call " + mHandle + kPing));
    EXPECT_TRUE(eventually([this] { return mHolder.find(probe::kName).empty(); }));
}

TEST_F(AForeignHolder, MayClearItsDeathRequest) {
    EXPECT_EQ("done", mHolder.ask("watch " + mHandle + " 99"));
    EXPECT_EQ("done", mHolder.ask("unwatch " + mHandle + " 99"));
    EXPECT_EQ("cleared 99", mHolder.event("cleared"));
}

}  // namespace
