// SPDX-License-Identifier: Apache-2.0
// What a person is told when something that speech needs is missing.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;

namespace {

constexpr const char* kNotFound =
    "-8 service not found: is voxtreld running? start it with: voxtreld "
    "(voxtrelctl doctor looks further)\n";
constexpr const char* kWaiting =
    "voxtrelctl: looking for the service for up to 10 s; is voxtreld running?\n";

/// Every command that needs the service, quick to give up.
std::vector<Device::Words> everyCommand(const std::string& timeout) {
    std::vector<Device::Words> all = {
        {"say", "x"},
        {"say", "--wait", "x"},
        {"silence", "1"},
        {"stop"},
        {"break-lock"},
        {"status"},
        {"languages"},
        {"voices"},
        {"get"},
        {"set", "speed", "1"},
        {"set", "language", "fr"},
        {"enable"},
        {"disable", "pitch"},
        {"profile", "save", "p.ini"},
        {"monitor"},
    };
    for (Device::Words& words : all) {
        words.insert(words.end(), {"--timeout", timeout});
    }
    all.push_back({"lock", "--timeout", timeout, "--", "true"});
    return all;
}

TEST(WithoutAService, ACommandSaysWhatItWaitsForAndThenMinusEight) {
    Device device;
    const Outcome outcome = device.ctl({"status"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, std::string(kWaiting) + "voxtrelctl: " + kNotFound);
}

TEST(WithoutAService, NoCommandWaitsForItLongerThanItsTimeout) {
    Device device;
    std::vector<std::unique_ptr<ChildProcess>> running;
    for (const Device::Words& words : everyCommand("1.5")) {
        running.push_back(device.start(words));
    }
    for (const auto& each : running) {
        const Outcome outcome = each->finish();
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err,
                  std::string("voxtrelctl: looking for the service for up to 2 s; is voxtreld "
                              "running?\nvoxtrelctl: ") +
                      kNotFound);
    }
}

TEST(WithoutAService, TheSearchEndsAtOnceOnCtrlC) {
    Device device;
    const auto waiting = device.start({"say", "x"});
    ASSERT_TRUE(waiting->awaitError(kWaiting));
    waiting->kill(SIGINT);
    const Outcome outcome = waiting->finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, std::string(kWaiting) + "voxtrelctl: interrupted\n");
}

std::string saysThatThereIsNoManager(const Device& device) {
    return "voxtrelctl: -8 service not found: there is no service manager at " +
           device.path("binder") +
           " (Connection refused): start it with: voxtrel-servicemanager "
           "(same VOXTREL_BINDER_SOCKET as here)\n";
}

TEST(WithoutAServiceManager, EveryCommandSaysSoSoonWithThePathThatItTried) {
    Device device;
    device.killServiceManager();
    const auto begin = std::chrono::steady_clock::now();
    std::vector<std::unique_ptr<ChildProcess>> running;
    for (const Device::Words& words : everyCommand("600")) {
        running.push_back(device.start(words));
    }
    for (const auto& each : running) {
        const Outcome outcome = each->finish();
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find(saysThatThereIsNoManager(device)), std::string::npos)
            << outcome.err;  // a runtime may add to it
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
}

// As one of a script that starts service manager, service and command in three lines.
TEST(WithoutAServiceManager, ACommandWaitsForOneThatMayStillBeStarting) {
    Device device;
    device.killServiceManager();
    const auto begin = std::chrono::steady_clock::now();
    const Outcome outcome = device.ctl({"stop"});
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(800));
    EXPECT_NE(outcome.err.find(saysThatThereIsNoManager(device)), std::string::npos) << outcome.err;
}

/// Two threads, the one that searches among them, which rest: it has looked in vain.
bool hasLooked(pid_t command) {
    int resting = 0;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(command) + "/task")) {
        std::ifstream status(thread.path() / "status");
        const std::string text{std::istreambuf_iterator<char>(status), {}};
        resting += text.find("\nState:\tS") != std::string::npos ? 1 : 0;
    }
    return resting > 1;
}

// The name of one that runs comes back, so that no time goes by with its start.
TEST(AServiceManagerThatComesLate, IsFoundByACommandThatSearches) {
    Device device;
    device.startService({"--sink", "none"});
    const std::string name = device.path("binder");
    const auto comesInTime = [&] {
        std::filesystem::rename(name, name + ".away");
        const auto begin = std::chrono::steady_clock::now();
        const auto searching = device.start({"stop"});
        EXPECT_TRUE(eventually([&] { return hasLooked(searching->pid()); }));
        std::filesystem::rename(name + ".away", name);
        const auto passed = std::chrono::steady_clock::now() - begin;
        const Outcome outcome = searching->finish();
        const bool isInTime = passed < std::chrono::milliseconds(400);
        EXPECT_TRUE(!isInTime || outcome.status == 0) << outcome.err;
        return isInTime;
    };
    EXPECT_TRUE(eventually(comesInTime)) << "the machine is too busy for a command's 0.8 s";
}

TEST(AServiceThatComesLate, IsFoundByACommandThatWaits) {
    Device device;
    const auto waiting = device.start({"say", "--wait", "late"});
    ASSERT_TRUE(waiting->awaitError(kWaiting));
    device.startService({"--sink", "none"});
    const Outcome outcome = waiting->finish();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("finished 1\n"), std::string::npos);
}

TEST(AnErrorLine, IsWrittenInOnePieceForTheRuntimeWritesBesideIt) {
    Device device;
    device.killServiceManager();
    for (const char* command : {"doctor", "status"}) {
        ChildProcess process({Device::control(), command}, "", ChildProcess::Errors::InPieces);
        EXPECT_EQ(process.finish().status, 1);
        bool isSeen = false;
        for (const std::string& piece : process.errorPieces()) {
            EXPECT_EQ(piece.find('\n'), piece.size() - 1) << piece;
            isSeen = isSeen || piece.rfind("voxtrelctl: -8 service not found: ", 0) == 0;
        }
        EXPECT_TRUE(isSeen) << command;
    }
}

TEST(TheDoctor, FindsTheServiceManagerAbsent) {
    Device device;
    device.killServiceManager();
    const Outcome outcome = device.ctl({"doctor"});
    EXPECT_EQ(outcome.status, 1);
    const std::string seen =
        "there is no service manager at " + device.path("binder") + " (Connection refused)";
    EXPECT_EQ(outcome.out.rfind("!!  service manager  " + seen + "; start it with: ", 0), 0U)
        << outcome.out;
    EXPECT_NE(outcome.err.find("voxtrelctl: -8 service not found: service manager " + seen + ": "),
              std::string::npos)
        << outcome.err;
}

TEST(TheDoctor, FindsTheServiceAbsent) {
    Device device;
    const Outcome outcome = device.ctl({"doctor"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("ok  service manager  running, " + device.path("binder") +
                               ", socket, process " + std::to_string(device.managerPid()) + "\n"),
              std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("!!  service          absent; "), std::string::npos) << outcome.out;
}

TEST(TheDoctor, FindsAServiceThatHangs) {
    Device device;
    device.startService({"--sink", "none"});
    ASSERT_EQ(kill(device.servicePid(), SIGSTOP), 0);
    const Outcome outcome = device.ctl({"doctor"});
    ASSERT_EQ(kill(device.servicePid(), SIGCONT), 0);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("!!  answer           the service does not answer (process " +
                               std::to_string(device.servicePid()) + " is stopped); "),
              std::string::npos)
        << outcome.out;
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
    EXPECT_EQ(device.ctl({"enable"}).status, 0);
    const Outcome mute = device.ctl({"doctor"});
    EXPECT_EQ(mute.status, 1);
    EXPECT_EQ(mute.err,
              "voxtrelctl: tts-volume is 0: raise it with: voxtrelctl set tts-volume 100\n");
}

TEST(TheDoctor, ListsWhatIsSwitchedOff) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"disable", "pitch"}).status, 0);
    const Outcome outcome = device.ctl({"doctor"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("??  pitch            switched off, so that nobody can choose it; "
                               "switch it on with: voxtrelctl enable pitch\n"),
              std::string::npos)
        << outcome.out;
}

}  // namespace
