// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <malloc.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <random>
#include <string>
#include <thread>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::DEAD_OBJECT;
using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using probe::CountingDeathRecipient;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

using TheDeathOfAService = probe::ProbeTest;

TEST_F(TheDeathOfAService, IsToldToEachLinkOnce) {
    const sp<CountingDeathRecipient> one = new CountingDeathRecipient();
    const sp<CountingDeathRecipient> two = new CountingDeathRecipient();
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
    const sp<CountingDeathRecipient> stays = new CountingDeathRecipient();
    const sp<CountingDeathRecipient> leaves = new CountingDeathRecipient();
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

TEST_F(TheDeathOfAService, IsToldToALinkMadeAfterIt) {
    mServer.killNow();
    const sp<CountingDeathRecipient> late = new CountingDeathRecipient();
    EXPECT_EQ(OK, mNode->linkToDeath(late));
    EXPECT_TRUE(eventually([&] { return late->deaths() == 1; }));
    EXPECT_TRUE(late->toldElsewhere()) << "on a thread of the pool, not in linkToDeath";
    EXPECT_FALSE(mNode->isBinderAlive());
    EXPECT_EQ(DEAD_OBJECT, mNode->linkToDeath(late)) << "it has been told";
    EXPECT_EQ(1, late->deaths());
}

TEST_F(TheDeathOfAService, IsToldToALinkMadeAfterACallHasFailed) {
    mServer.killNow();
    EXPECT_EQ(DEAD_OBJECT, mNode->pingBinder());
    const sp<CountingDeathRecipient> late = new CountingDeathRecipient();
    EXPECT_EQ(OK, mNode->linkToDeath(late));
    EXPECT_TRUE(eventually([&] { return late->deaths() == 1; }));
}

TEST_F(TheDeathOfAService, IsToldToALinkMadeAfterItOrTheLinkIsTakenBackInTime) {
    mServer.killNow();
    const sp<CountingDeathRecipient> leaves = new CountingDeathRecipient();
    EXPECT_EQ(OK, mNode->linkToDeath(leaves));
    const bool late = mNode->unlinkToDeath(leaves) == DEAD_OBJECT;
    const sp<CountingDeathRecipient> stays = new CountingDeathRecipient();
    const bool told = mNode->linkToDeath(stays) == DEAD_OBJECT;
    EXPECT_TRUE(eventually([&] { return told || stays->deaths() == 1; }));
    EXPECT_TRUE(eventually([&] { return leaves->deaths() == (late ? 1 : 0); }));
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
    const sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
    EXPECT_EQ(OK, node->linkToDeath(recipient));
    forker.killNow();
    EXPECT_TRUE(eventually([&] { return recipient->deaths() == 1; }));
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

// Is watched by the test node and never comes back from a call to it; until it is killed.
const voxtrel_test::Role kStuck("stuck", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    const sp<IBinder> node = probe::find();
    Call link;
    link.data.writeStrongBinder(probe::makeNode());
    if (link.to(node, probe::kLink) != OK) {
        return 1;
    }
    Call block;
    (void)block.to(node, probe::kBlock);
    return 0;
});

#ifdef VOXTREL_TESTS_SANITIZED
constexpr long kMoreResidentKiB = 16 * 1024;  // they keep what has been freed for a while
#else
constexpr long kMoreResidentKiB = 2048;  // a pool that has grown to all of its 15 threads
#endif

// What threads that the pool did not have before have of their own: a buffer of 64 KiB each, and a
// little more.
int heapOfThreadsKiB(int newThreads) {
    return 72 * std::max(0, newThreads);
}

// 200 rounds of a service, its busy client and this process, one of the three killed in the middle
// of what they are doing: the service, the client or the service manager.
class TwoHundredRounds : public testing::Test {
protected:
    void SetUp() override { probe::startPool(); }

    void startService() {
        mService = ChildProcess::asRole("server");
        ASSERT_EQ("ready", mService.readLine());
        mNode = probe::find();
        mRecipient = new CountingDeathRecipient();
        ASSERT_EQ(OK, mNode->linkToDeath(mRecipient));
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
        EXPECT_TRUE(eventually([this] { return mRecipient->deaths() == 1; }));
        EXPECT_EQ(DEAD_OBJECT, mNode->pingBinder());
        mClient.killNow();
        startService();
        startClient();
        EXPECT_EQ(OK, mNode->pingBinder());
    }

    void endClient() {
        mClient.killNow();
        ++mDeathsThere;
        EXPECT_TRUE(
            eventually([this] { return probe::ask(mNode, probe::kDeaths) == mDeathsThere; }));
        EXPECT_EQ(0, mRecipient->deaths());
    }

    void killClient() {
        endClient();
        startClient();
    }

    // Known to be in the middle of a call: it has come to the service and is not answered yet.
    void killBlockedClient() {
        endClient();
        mClient = ChildProcess::asRole("stuck");
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
        endClient();
        probe::ask(mNode, probe::kUnblock);
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 0; }));
        startClient();
    }

    // Known to be in the middle of a call of this process.
    void killServiceInACall() {
        auto blocked = std::async(std::launch::async, [node = mNode] {
            Call call;
            return call.to(node, probe::kBlock);
        });
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
        killService();
        EXPECT_EQ(DEAD_OBJECT, blocked.get());
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
        switch (std::uniform_int_distribution<>(0, 4)(mRandom)) {
            case 0:
                return killService();
            case 1:
                return killServiceInACall();
            case 2:
                return killClient();
            case 3:
                return killBlockedClient();
            default:
                return killManager();
        }
    }

    // That of a service that has lived through so many deaths of its clients.
    void expectTheServiceToKeepNothing() {
        killBlockedClient();
        endClient();  // which has more sockets at one time than at another
        const int descriptors = probe::descriptorsOf(mService.pid());
        const int32_t heapKiB = probe::ask(mNode, probe::kHeap);
        const int threads = probe::threadsOf(mService.pid());
        startClient();
        for (int i = 0; i < 20; ++i) {
            killClient();
            killBlockedClient();
        }
        endClient();
        EXPECT_TRUE(eventually([&] { return probe::descriptorsOf(mService.pid()) <= descriptors; }))
            << probe::descriptorsOf(mService.pid()) << " instead of " << descriptors;
        EXPECT_LE(probe::ask(mNode, probe::kHeap),
                  heapKiB + 256 + heapOfThreadsKiB(probe::threadsOf(mService.pid()) - threads));
        startClient();
    }

    // That of a service manager that has seen so many services come and die.
    void expectTheManagerToKeepNothing() {
        for (int i = 0; i < 5; ++i) {
            killService();
        }
        const int descriptors = probe::descriptorsOf(mRuntime.manager().pid());
        const long residentKiB = probe::residentKiB(mRuntime.manager().pid());
        for (int i = 0; i < 10; ++i) {
            killServiceInACall();
        }
        EXPECT_TRUE(eventually([&] {
            return probe::descriptorsOf(mRuntime.manager().pid()) <= descriptors;
        })) << "more than "
            << descriptors;
        EXPECT_LE(probe::residentKiB(mRuntime.manager().pid()), residentKiB + kMoreResidentKiB);
    }

    std::mt19937 mRandom{20231};  // the same rounds each time
    voxtrel_test::PrivateRuntime mRuntime{VOXTREL_SERVICEMANAGER};
    ChildProcess mService = ChildProcess({"true"});
    ChildProcess mClient = ChildProcess({"true"});
    sp<IBinder> mNode;
    sp<CountingDeathRecipient> mRecipient;
    int mDeathsThere = 0;
};

TEST_F(TwoHundredRounds, OfKillingLeaveNothingBehind) {
    startService();
    startClient();
    for (int i = 0; i < 20; ++i) {
        round();
    }
    const int descriptors = probe::descriptors();
    const auto heapKiB = static_cast<int>(mallinfo2().uordblks / 1024);
    const int threads = probe::threadsOf(getpid());
    for (int i = 0; i < voxtrel_test::repeats(122) && !HasFailure(); ++i) {
        round();
    }
    // The service and the service manager must live through what they are compared over.
    expectTheServiceToKeepNothing();
    expectTheManagerToKeepNothing();
    EXPECT_TRUE(eventually([&] { return probe::descriptors() <= descriptors; }));
    EXPECT_LE(static_cast<int>(mallinfo2().uordblks / 1024),
              heapKiB + 256 + heapOfThreadsKiB(probe::threadsOf(getpid()) - threads));
}

}  // namespace
