// SPDX-License-Identifier: Apache-2.0
// What a person at a terminal sees; `script` is the terminal.
#include <gtest/gtest.h>

#include <csignal>

#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;

namespace {

/// Starts voxtrelctl on a terminal of its own.
std::unique_ptr<ChildProcess> onTerminal(const std::string& arguments) {
    return std::make_unique<ChildProcess>(
        ChildProcess::Words{"script", "-qefc", Device::control() + " " + arguments, "/dev/null"},
        "");
}

TEST(APersonAtATerminal, SeesTheWordsAndNothingElse) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome seen = onTerminal("say --wait 'Hello there, world. It works.'")->finish();
    EXPECT_EQ(seen.status, 0);
    EXPECT_EQ(seen.out, "Hello there, world. It works.\r\n");
}

TEST(APersonAtATerminal, SeesLinesForTextThatIsMarkedUp) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome seen =
        onTerminal("say --wait '<speak>Hello<mark name=\"a\"/></speak>'")->finish();
    EXPECT_EQ(seen.status, 0);
    EXPECT_EQ(seen.out, "started 1\r\nword 1 at 7: Hello\r\nmark 1 1\r\nfinished 1\r\n");
}

TEST(APersonAtATerminal, SeesEachWordWhenItIsSpoken) {
    Device device;
    device.startService({"--real-time"});
    const auto terminal = onTerminal("say --wait --speed 80 'Slowly, one word after the other.'");
    ASSERT_TRUE(terminal->awaitOutput("Slowly,"));
    EXPECT_EQ(terminal->output().find("other."), std::string::npos) << terminal->output();
    ASSERT_TRUE(terminal->awaitOutput("Slowly, one word"));
    EXPECT_EQ(terminal->finish().out, "Slowly, one word after the other.\r\n");
}

TEST(APersonAtATerminal, SeesWhereSpeechWasStopped) {
    Device device;
    device.startService({"--real-time"});
    const auto terminal = onTerminal("say --wait --speed 80 'Slowly, one word after the other.'");
    ASSERT_TRUE(terminal->awaitOutput("Slowly,"));
    EXPECT_EQ(device.ctl({"stop"}).status, 0);
    const std::string seen = terminal->finish().out;
    EXPECT_NE(seen.find(" [stopped]\r\n"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("other."), std::string::npos) << seen;
}

TEST(APersonAtATerminal, SeesWhatIsWaitedForAndThenOnlyTheResult) {
    Device device;
    const auto terminal = onTerminal("say --wait Late.");
    ASSERT_TRUE(
        terminal->awaitOutput("looking for the service for up to 10 s; is voxtreld running?"));
    device.startService({"--sink", "none"});
    const std::string seen = terminal->finish().out;
    const std::string erased = "\r\x1b[K";
    EXPECT_EQ(seen.substr(seen.rfind(erased)), erased + "Late.\r\n") << seen;
    EXPECT_EQ(seen.find("Debug"), std::string::npos) << "the library's own lines are kept away";
}

TEST(APersonAtATerminal, SeesOneLineForAnError) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"disable"}).status, 0);
    const Outcome seen = onTerminal("say --wait no")->finish();
    EXPECT_EQ(seen.status, 1);
    EXPECT_EQ(seen.out,
              "voxtrelctl: -1 speech is disabled: switch it on with: "
              "voxtrelctl enable speech\r\n");
}

TEST(APersonWhoAsksForIt, SeesWhomItTalksTo) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome seen = device.ctl({"languages", "--verbose"});
    EXPECT_EQ(seen.status, 0);
    EXPECT_EQ(seen.err, "voxtrelctl: connected to process " + std::to_string(device.servicePid()) +
                            " by socket " + device.path("binder") + "\n");
    EXPECT_EQ(seen.out.rfind("en_US  ", 0), 0U) << seen.out;
}

}  // namespace
