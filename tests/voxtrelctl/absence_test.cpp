// SPDX-License-Identifier: Apache-2.0
// What a person is told when something that speech needs is missing.
#include <gtest/gtest.h>

#include <csignal>

#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;

namespace {

constexpr const char* kNotFound =
    "-8 service not found: is voxtreld running? start it with: voxtreld "
    "(voxtrelctl doctor looks further)\n";
constexpr const char* kWaiting =
    "voxtrelctl: looking for the service for up "
    "to 15 s; is voxtreld running?\n";

TEST(WithoutAService, ACommandSaysWhatItWaitsForAndThenMinusEight) {
    Device device;
    const Outcome outcome = device.ctl({"status"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, std::string(kWaiting) + "voxtrelctl: " + kNotFound);
}

TEST(WithoutAService, TheSearchEndsAtOnceOnCtrlC) {
    Device device;
    const auto waiting = device.start({"say", "x"});
    ASSERT_TRUE(waiting->awaitError(kWaiting));
    waiting->signal(SIGINT);
    const Outcome outcome = waiting->wait();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, std::string(kWaiting) + "voxtrelctl: interrupted\n");
}

/// Where the runtime waits for one without end, nothing of this program's may wait with it.
TEST(WithoutAServiceManager, TheSearchEndsAtOnceOnCtrlC) {
    Device device;
    device.killServiceManager();
    const auto waiting = device.start({"say", "x"});
    ASSERT_TRUE(waiting->awaitError(kWaiting));
    waiting->signal(SIGINT);
    const Outcome outcome = waiting->wait();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find("voxtrelctl: interrupted\n"), std::string::npos) << outcome.err;
}

TEST(AServiceThatComesLate, IsFoundByACommandThatWaits) {
    Device device;
    const auto waiting = device.start({"say", "--wait", "late"});
    ASSERT_TRUE(waiting->awaitError(kWaiting));
    device.startService({"--sink", "none"});
    const Outcome outcome = waiting->wait();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("finished 1\n"), std::string::npos);
}

TEST(TheDoctor, FindsTheServiceManagerAbsent) {
    Device device;
    device.killServiceManager();
    const Outcome outcome = device.ctl({"doctor"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(
        outcome.out.rfind("!!  service manager  none that this user can reach; start it with: ", 0),
        0U)
        << outcome.out;
    EXPECT_EQ(
        outcome.err.rfind(
            "voxtrelctl: -8 service not found: service manager none that this user can reach: ", 0),
        0U)
        << outcome.err;
}

TEST(TheDoctor, FindsTheServiceAbsent) {
    Device device;
    const Outcome outcome = device.ctl({"doctor"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("ok  service manager  running\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("!!  service          absent; start it with: voxtreld\n"),
              std::string::npos)
        << outcome.out;
}

TEST(TheDoctor, FindsAServiceThatHangs) {
    Device device;
    device.startService({"--sink", "none"});
    ASSERT_EQ(kill(device.servicePid(), SIGSTOP), 0);
    const Outcome outcome = device.ctl({"doctor"});
    ASSERT_EQ(kill(device.servicePid(), SIGCONT), 0);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("!!  answer"), std::string::npos) << outcome.out;
}

TEST(TheDoctor, IsContentWithAServiceInOrder) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome outcome = device.ctl({"doctor"});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out.find("!!"), std::string::npos) << outcome.out;
}

TEST(TheDoctor, FindsSpeechDisabledAndTheVolumeAtZero) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"set", "tts-volume", "0"}).status, 0);
    EXPECT_EQ(device.ctl({"disable"}).status, 0);
    const Outcome outcome = device.ctl({"doctor"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("!!  speech"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("!!  tts-volume"), std::string::npos) << outcome.out;
    EXPECT_EQ(outcome.err.rfind("voxtrelctl: -1 speech is disabled: ", 0), 0U) << outcome.err;
}

}  // namespace
