// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "tests/platform/ProbeTest.h"

namespace {

using android::transport::LogAllowance;

TEST(TheLogOfWhatOthersCause, HasAFewLinesASecondAndCountsTheRest) {
    LogAllowance allowance;
    const LogAllowance::Time begin{std::chrono::hours(1)};
    for (int i = 0; i < LogAllowance::kLines; ++i) {
        EXPECT_EQ(0, allowance.take(begin));
    }
    EXPECT_EQ(-1, allowance.take(begin));
    EXPECT_EQ(-1, allowance.take(begin + std::chrono::milliseconds(999)));
    EXPECT_EQ(2, allowance.take(begin + std::chrono::seconds(1)));
    EXPECT_EQ(0, allowance.take(begin + std::chrono::seconds(1)));
}

using TheServiceManagersLog = probe::ProbeTest;

TEST_F(TheServiceManagersLog, HasAHundredLinesASecondAndCountsTheRest) {
    mRuntime.killManager();
    voxtrel_test::ChildProcess manager({"sh", "-c", "exec " VOXTREL_SERVICEMANAGER " 2>&1"});
    ASSERT_EQ("voxtrel-servicemanager: ready", manager.readLine());
    std::atomic<bool> enough{false};
    std::thread adder([&enough] {
        const android::sp<android::IBinder> node = probe::makeNode();
        while (!enough) {
            (void)android::defaultServiceManager()->addService(android::String16("again"), node);
        }
    });
    int lines = 0;
    std::string line = manager.readLine();
    while (line.find("lines were left out") == std::string::npos && ++lines < 10000) {
        line = manager.readLine();
    }
    enough = true;
    adder.join();
    // The first second counts from the first line, and may be over when the adding begins.
    EXPECT_GE(lines, 99);
    EXPECT_LE(lines, 200);
}

}  // namespace
