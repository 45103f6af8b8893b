// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <malloc.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <random>
#include <string>
#include <thread>

#include "tests/platform/ProbeTest.h"

namespace {

using android::DEAD_OBJECT;
using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using probe::Mourner;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

using TheDeathOfAService = probe::ProbeTest;

TEST_F(TheDeathOfAService, IsToldToEachLinkOnce) {
    const sp<Mourner> one = new Mourner();
    const sp<Mourner> two = new Mourner();
    EXPECT_EQ(OK, mNode->linkToDeath(one));
    EXPECT_EQ(OK, mNode->linkToDeath(two));
    EXPECT_EQ(OK, mNode->linkToDeath(two));
    mServer.killNow();
    EXPECT_TRUE(eventually([&] { return one->deaths() == 1 && two->deaths() == 2; }));
    EXPECT_TRUE(one->last() == android::wp<IBinder>(mNode));
    EXPECT_FALSE(mNode->isBinderAlive());
    EXPECT_EQ(DEAD_OBJECT, mNode->unlinkToDeath(one));
    EXPECT_EQ(DEAD_OBJECT, mNode->linkToDeath(one));
    EXPECT_EQ(1, one->deaths());
}

TEST_F(TheDeathOfAService, IsNotToldToALinkThatWasTakenBack) {
    const sp<Mourner> stays = new Mourner();
    const sp<Mourner> leaves = new Mourner();
    mNode->linkToDeath(stays);
    mNode->linkToDeath(leaves);
    EXPECT_EQ(OK, mNode->unlinkToDeath(leaves));
    mServer.killNow();
    EXPECT_TRUE(eventually([&] { return stays->deaths() == 1; }));
    EXPECT_EQ(0, leaves->deaths());
}

TEST_F(TheDeathOfAService, GivesDeadObjectToEveryCallAtOnce) {
    mServer.killNow();
    EXPECT_EQ(DEAD_OBJECT, mNode->pingBinder());
    Call call;
    EXPECT_EQ(DEAD_OBJECT, call.to(mNode, probe::kNote, IBinder::FLAG_ONEWAY));
    EXPECT_FALSE(mNode->isBinderAlive());
}

TEST_F(TheDeathOfAService, GivesDeadObjectToAFirstOneWayCall) {
    mServer.killNow();
    Call call;
    EXPECT_EQ(DEAD_OBJECT, call.to(mNode, probe::kNote, IBinder::FLAG_ONEWAY));
}

TEST_F(TheDeathOfAService, RefusesALinkMadeAfterIt) {
    mServer.killNow();
    const sp<Mourner> late = new Mourner();
    EXPECT_EQ(DEAD_OBJECT, mNode->linkToDeath(late));
    EXPECT_EQ(0, late->deaths());
}

TEST_F(TheDeathOfAService, WakesACallerThatWaits) {
    auto blocked = std::async(std::launch::async, [this] {
        Call call;
        return call.to(mNode, probe::kBlock);
    });
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    mServer.killNow();
    EXPECT_EQ(DEAD_OBJECT, blocked.get());
}

TEST_F(TheDeathOfAService, IsForgottenByTheServiceManager) {
    mServer.killNow();
    EXPECT_TRUE(eventually([] {
        return android::defaultServiceManager()->getService(android::String16(probe::kName)) ==
               nullptr;
    }));
}

TEST_F(TheDeathOfAService, IsSeenThoughAForkedChildOfItLivesOn) {
    ChildProcess forker = ChildProcess::asRole("forker");
    const std::string child = forker.readLine();
    ASSERT_FALSE(child.empty());
    const sp<IBinder> node = probe::find("forker");
    const sp<Mourner> mourner = new Mourner();
    EXPECT_EQ(OK, node->linkToDeath(mourner));
    forker.killNow();
    EXPECT_TRUE(eventually([&] { return mourner->deaths() == 1; }));
    EXPECT_EQ(0, kill(std::stoi(child), SIGKILL)) << "the child was to live on";
}

// Offers a node, forks a child that only waits, and tells its process id.
const voxtrel_test::Role kForker("forker", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    android::defaultServiceManager()->addService(android::String16("forker"), probe::makeNode());
    const pid_t child = fork();
    if (child == 0) {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        for (;;) {
            pause();
        }
    }
    voxtrel_test::tell(std::to_string(child));
    pause();
    return 0;
});

// 200 rounds of a service, its busy client and this process, one of the three killed in the middle
// of what they are doing: the service, the client or the service manager.
class TwoHundredRounds : public testing::Test {
protected:
    void SetUp() override { probe::startPool(); }

    void startService() {
        mService = ChildProcess::asRole("server");
        ASSERT_EQ("ready", mService.readLine());
        mNode = probe::find();
        mMourner = new Mourner();
        ASSERT_EQ(OK, mNode->linkToDeath(mMourner));
        mDeathsThere = 0;
    }

    void startClient() {
        mClient = ChildProcess::asRole("busy");
        ASSERT_EQ("ready", mClient.readLine());
    }

    // Calls until a random moment, so that the victim is in the middle of something.
    void work() {
        const auto end =
            std::chrono::steady_clock::now() +
            std::chrono::microseconds(std::uniform_int_distribution<>(0, 3000)(mRandom));
        do {
            Call call;
            call.data.writeStrongBinder(probe::makeNode());
            call.data.writeInt32(2);
            EXPECT_EQ(OK, call.to(mNode, probe::kCallBack));
        } while (std::chrono::steady_clock::now() < end);
    }

    void killService() {
        mService.killNow();
        EXPECT_TRUE(eventually([this] { return mMourner->deaths() == 1; }));
        EXPECT_EQ(DEAD_OBJECT, mNode->pingBinder());
        mClient.killNow();
        startService();
        startClient();
        EXPECT_EQ(OK, mNode->pingBinder());
    }

    void killClient() {
        mClient.killNow();
        ++mDeathsThere;
        EXPECT_TRUE(
            eventually([this] { return probe::ask(mNode, probe::kDeaths) == mDeathsThere; }));
        EXPECT_EQ(0, mMourner->deaths());
        startClient();
    }

    void killManager() {
        mRuntime.killManager();
        EXPECT_EQ(OK, mNode->pingBinder());
        EXPECT_EQ(nullptr,
                  android::defaultServiceManager()->getService(android::String16("probe")).get());
        mRuntime.startManager();
        EXPECT_EQ("ready", mService.ask("again"));
        EXPECT_TRUE(probe::find() == mNode);
    }

    void round() {
        work();
        switch (std::uniform_int_distribution<>(0, 2)(mRandom)) {
            case 0:
                return killService();
            case 1:
                return killClient();
            default:
                return killManager();
        }
    }

    std::mt19937 mRandom{20231};  // the same rounds each time
    voxtrel_test::PrivateRuntime mRuntime{VOXTREL_SERVICEMANAGER};
    ChildProcess mService = ChildProcess({"true"});
    ChildProcess mClient = ChildProcess({"true"});
    sp<IBinder> mNode;
    sp<Mourner> mMourner;
    int mDeathsThere = 0;
};

TEST_F(TwoHundredRounds, OfKillingLeaveNothingBehind) {
    startService();
    startClient();
    for (int i = 0; i < 20; ++i) {
        round();
    }
    const int descriptors = probe::descriptors();
    const auto heap = mallinfo2().uordblks;
    for (int i = 0; i < 180 && !HasFailure(); ++i) {
        round();
    }
    EXPECT_TRUE(eventually([&] { return probe::descriptors() <= descriptors; }));
    EXPECT_LT(mallinfo2().uordblks, heap + 256 * 1024);
}

}  // namespace
