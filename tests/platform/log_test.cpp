// SPDX-License-Identifier: Apache-2.0
#include "support/Log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <set>
#include <string>

#include "tests/platform/ProbeTest.h"

namespace {

using android::transport::LogRateLimit;

TEST(TheLogOfWhatOthersCause, HasAFewLinesASecondAndCountsTheRest) {
    LogRateLimit limit;
    const LogRateLimit::Time begin{std::chrono::hours(1)};
    for (int i = 0; i < LogRateLimit::kLines; ++i) {
        EXPECT_EQ(0, limit.take(begin));
    }
    EXPECT_EQ(-1, limit.take(begin));
    EXPECT_EQ(-1, limit.take(begin + std::chrono::milliseconds(999)));
    EXPECT_EQ(2, limit.take(begin + std::chrono::seconds(1)));
    EXPECT_EQ(0, limit.take(begin + std::chrono::seconds(1)));
}

TEST(TheLogOfWhatOthersCause, MayBeGivenMoreLines) {
    LogRateLimit limit(1000);
    const LogRateLimit::Time begin{std::chrono::hours(1)};
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(0, limit.take(begin));
    }
    EXPECT_EQ(-1, limit.take(begin));
}

constexpr int kServices = 600;  // their lines fit into a pipe, however late this test reads

// Adds many services at once.
const voxtrel_test::Role kAdder("adder", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    const android::sp<android::IBinder> node = probe::makeNode();
    int added = 0;
    for (int i = 0; i < kServices; ++i) {
        const android::String16 name(("service" + std::to_string(i)).c_str());
        added += android::defaultServiceManager()->addService(name, node) == android::OK ? 1 : 0;
    }
    voxtrel_test::tell(std::to_string(added));
    (void)voxtrel_test::hear();
    return 0;
});

using TheServiceManagersLog = probe::ProbeTest;

TEST_F(TheServiceManagersLog, HasALineForEachOfManyChangesAtOnce) {
    mRuntime.killManager();
    voxtrel_test::ChildProcess manager({"sh", "-c", "exec " VOXTREL_SERVICEMANAGER " 2>&1"});
    ASSERT_EQ("voxtrel-servicemanager: ready", manager.readLine());
    auto adder = voxtrel_test::ChildProcess::asRole("adder");
    for (int i = 0; i < kServices; ++i) {
        ASSERT_EQ("voxtrel-servicemanager: added service" + std::to_string(i) + " (process " +
                      std::to_string(adder.pid()) + ", user " + std::to_string(getuid()) + ")",
                  manager.readLine());
    }
    ASSERT_EQ(std::to_string(kServices), adder.readLine());
    const std::string end = ": process " + std::to_string(adder.pid()) + " has died";
    adder.killNow();
    std::set<std::string> gone;
    for (int i = 0; i < kServices; ++i) {
        const std::string line = manager.readLine();
        ASSERT_NE(std::string::npos, line.find(end)) << line;
        gone.insert(line);
    }
    EXPECT_EQ(size_t{kServices}, gone.size());
}

}  // namespace
