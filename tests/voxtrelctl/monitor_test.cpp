// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <csignal>

#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;

namespace {

TEST(TheMonitor, ShowsEveryChangeThatConcernsAll) {
    Device device;
    device.startService({"--sink", "none"});
    const auto monitor = device.start({"monitor", "--count", "7"});
    ASSERT_TRUE(monitor->awaitOutput("service connected\n"));
    EXPECT_EQ(device.ctl({"disable"}).status, 0);
    EXPECT_EQ(device.ctl({"enable"}).status, 0);
    EXPECT_EQ(device.ctl({"set", "speed", "250"}).status, 0);
    EXPECT_EQ(device.ctl({"disable", "pitch"}).status, 0);
    EXPECT_EQ(device.ctl({"set", "language", "ko_KR"}).status, 0);
    EXPECT_EQ(device.ctl({"lock", "--", "true"}).status, 0);
    const Outcome seen = monitor->finish();
    EXPECT_EQ(seen.status, 0) << seen.err;
    const std::string expected =
        "service connected\nspeech: off\nspeech: "
        "on\nspeed: 250\npitch-enable: off\n"
        "language: ko_KR\nlock: held by process ";
    EXPECT_EQ(seen.out.rfind(expected, 0), 0U) << seen.out;
    EXPECT_NE(seen.out.find("\nlock: free\n"), std::string::npos) << seen.out;
}

TEST(TheMonitor, ShowsJsonLines) {
    Device device;
    device.startService({"--sink", "none"});
    const auto monitor = device.start({"monitor", "--json", "--count", "1"});
    ASSERT_TRUE(monitor->awaitOutput("connected"));
    EXPECT_EQ(device.ctl({"set", "verbosity", "1"}).status, 0);
    EXPECT_EQ(monitor->finish().out,
              "{\"event\":\"connected\"}\n"
              "{\"event\":\"state\",\"what\":\"verbosity\",\"value\":1}\n");
}

TEST(TheMonitor, DoesNotHearWhatOthersSay) {
    Device device;
    device.startService({"--sink", "none"});
    const auto monitor = device.start({"monitor", "--count", "1"});
    ASSERT_TRUE(monitor->awaitOutput("connected"));
    EXPECT_EQ(device.ctl({"say", "--wait", "not for you"}).status, 0);
    EXPECT_EQ(device.ctl({"disable"}).status, 0);
    EXPECT_EQ(monitor->finish().out, "service connected\nspeech: off\n");
}

TEST(TheMonitor, LeavesCleanlyOnCtrlC) {
    Device device;
    device.startService({"--sink", "none"});
    const auto monitor = device.start({"monitor"});
    ASSERT_TRUE(monitor->awaitOutput("connected"));
    monitor->kill(SIGINT);
    const Outcome seen = monitor->finish();
    EXPECT_EQ(seen.status, 0);
    EXPECT_EQ(seen.err, "");
}

TEST(TheMonitor, OutlivesTheService) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"set", "speed", "333"}).status, 0);
    const auto monitor = device.start({"monitor"});
    ASSERT_TRUE(monitor->awaitOutput("service connected\n"));
    device.killService();
    ASSERT_TRUE(monitor->awaitOutput("service died\n"));
    device.startService({"--sink", "none"});
    ASSERT_TRUE(monitor->awaitOutput("service died\nservice connected\n"));
    EXPECT_EQ(device.ctl({"set", "speed", "334"}).status, 0);
    EXPECT_TRUE(monitor->awaitOutput("speed: 334\n"));
}

}  // namespace
