// SPDX-License-Identifier: Apache-2.0
// One-way calls of one process to one node through proxies that come and go: a new one, which may
// have sockets of its own, must not overtake what was sent through the one before.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::FAILED_TRANSACTION;
using android::IBinder;
using android::OK;
using android::sp;
using android::status_t;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

constexpr int kCaller = 7;

// Fetches the node anew from the service manager, or from a second process that keeps it.
sp<IBinder> fetch(const std::string& from) {
    if (from == probe::kName) {
        return probe::find();
    }
    Call give;
    return give.to(probe::find(from), probe::kGive) == OK ? give.reply.readStrongBinder() : nullptr;
}

// Sends numbered notes, each few of them through a proxy of their own; tells how many were sent.
const voxtrel_test::Role kForgetful("forgetful", [](const voxtrel_test::Arguments& arguments) {
    if (arguments[2] == "pool") {
        probe::startPool();
    }
    const int count = std::stoi(arguments[1]);
    int sent = 0;
    while (sent < count) {
        const sp<IBinder> node = fetch(arguments[0]);
        status_t status = node != nullptr ? OK : android::DEAD_OBJECT;
        const int end = std::min(count, sent + 1 + sent % 3);
        while (status == OK && sent < end) {
            status = probe::note(node, kCaller, sent);
            sent += status == OK ? 1 : 0;
        }
        if (status != OK && status != FAILED_TRANSACTION) {
            break;
        }
    }
    voxtrel_test::tell(std::to_string(sent));
    (void)voxtrel_test::hear();
    voxtrel_test::tell(std::to_string(probe::descriptors()));
    return 0;
});

// Several threads send numbered notes in turn, and let go of their proxies while others fetch
// theirs.
const voxtrel_test::Role kForgetfulThreads("forgetful-threads",
                                           [](const voxtrel_test::Arguments& arguments) {
                                               probe::startPool();
                                               const int count = std::stoi(arguments[0]);
                                               std::mutex turn;
                                               int sent = 0;
                                               const auto run = [&] {
                                                   for (status_t status = OK; status == OK;) {
                                                       const sp<IBinder> node = probe::find();
                                                       const std::lock_guard<std::mutex> held(turn);
                                                       if (node == nullptr || sent == count) {
                                                           return;
                                                       }
                                                       status = probe::noteUntilTaken(node, kCaller,
                                                                                      sent);
                                                       sent += status == OK ? 1 : 0;
                                                   }
                                               };
                                               std::vector<std::thread> threads;
                                               for (int i = 0; i < 4; ++i) {
                                                   threads.emplace_back(run);
                                               }
                                               for (std::thread& thread : threads) {
                                                   thread.join();
                                               }
                                               voxtrel_test::tell(std::to_string(sent));
                                               return 0;
                                           });

using AProxyThatIsFetchedAgain = probe::ProbeTest;

TEST_F(AProxyThatIsFetchedAgain, KeepsTheOrderOfOneWayCalls) {
    const int kCount = voxtrel_test::repeats(20000);
    ChildProcess caller =
        ChildProcess::asRole("forgetful", {probe::kName, std::to_string(kCount), "pool"});
    ASSERT_EQ(std::to_string(kCount), caller.readLine());
    expectInOrder(kCount);
}

TEST_F(AProxyThatIsFetchedAgain, KeepsTheOrderWhileAnotherThreadLetsGoOfTheOldOne) {
    const int kCount = voxtrel_test::repeats(20000);
    ChildProcess caller = ChildProcess::asRole("forgetful-threads", {std::to_string(kCount)});
    ASSERT_EQ(std::to_string(kCount), caller.readLine());
    expectInOrder(kCount);
}

TEST_F(AProxyThatIsFetchedAgain, KeepsTheOrderWithoutAThreadPoolAndHoldsNoDescriptors) {
    const int kCount = voxtrel_test::repeats(5000);
    ChildProcess caller =
        ChildProcess::asRole("forgetful", {probe::kName, std::to_string(kCount), "no pool"});
    ASSERT_EQ(std::to_string(kCount), caller.readLine());
    expectInOrder(kCount);
    EXPECT_LT(std::stoi(caller.ask("descriptors")), 40);
}

TEST_F(AProxyThatIsFetchedAgain, KeepsTheOrderWhenAThirdProcessGivesIt) {
    const int kCount = voxtrel_test::repeats(5000);
    ChildProcess keeper = ChildProcess::asRole("server", {"keeper"});
    ASSERT_EQ("ready", keeper.readLine());
    Call keep;
    keep.data.writeStrongBinder(mNode);
    ASSERT_EQ(OK, keep.to(probe::find("keeper"), probe::kKeep));
    ChildProcess caller =
        ChildProcess::asRole("forgetful", {"keeper", std::to_string(kCount), "pool"});
    ASSERT_EQ(std::to_string(kCount), caller.readLine());
    expectInOrder(kCount);
}

}  // namespace
