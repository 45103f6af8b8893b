// SPDX-License-Identifier: Apache-2.0
// A service that is killed and started again while others keep looking for it and calling it.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using android::status_t;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

// What one thread that keeps finding and calling has seen.
struct Caller {
    std::atomic<int32_t> answeredBy{0};  // the process that answered last
    std::atomic<int> dead{0};            // calls that gave DEAD_OBJECT
    std::atomic<int> other{0};           // calls that gave anything but that and OK
    std::atomic<status_t> last{OK};      // the last such status

    void callOnce() {
        const sp<IBinder> node =
            android::defaultServiceManager()->getService(android::String16(probe::kName));
        Call call;
        call.data.writeInplace(8);
        const status_t status = node != nullptr ? call.to(node, probe::kWho) : OK;
        if (status == android::DEAD_OBJECT) {
            ++dead;
        } else if (status != OK) {
            last = status;
            ++other;
        } else if (node != nullptr) {
            (void)call.reply.readInt64();
            answeredBy = call.reply.readInt32();
        }
    }
};

using AServiceThatIsStartedAgain = probe::ProbeTest;

TEST_F(AServiceThatIsStartedAgain, IsFoundAndCalledByThoseWhoNeverStoppedTrying) {
    std::array<Caller, 4> callers;
    std::atomic<bool> over{false};
    std::vector<std::thread> threads;
    for (Caller& caller : callers) {
        threads.emplace_back([&caller, &over] {
            while (!over) {
                caller.callOnce();
            }
        });
    }
    const auto allAnsweredBy = [&callers](pid_t process) {
        bool all = true;
        for (const Caller& caller : callers) {
            all = all && caller.answeredBy == process;
        }
        return all;
    };
    int dead = 0;
    for (int round = 0; round < voxtrel_test::repeats(25) && !HasFailure(); ++round) {
        EXPECT_TRUE(eventually([&] { return allAnsweredBy(mServer.pid()); })) << round;
        mServer.killNow();
        mServer = ChildProcess::asRole("server");
        EXPECT_EQ("ready", mServer.readLine());
    }
    EXPECT_TRUE(eventually([&] { return allAnsweredBy(mServer.pid()); }));
    over = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Caller& caller : callers) {
        EXPECT_EQ(0, caller.other) << "calls that gave " << caller.last;
        dead += caller.dead;
    }
    EXPECT_GT(dead, 0) << "nobody ever called at the moment of a death";
}

}  // namespace
