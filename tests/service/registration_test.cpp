// SPDX-License-Identifier: Apache-2.0
// The service and the service manager it is found through, which may be missing, hang, die and come
// again, or know another service by that name.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "service/ManagerPlace.h"
#include "tests/service/Processes.h"
#include "tests/support/Eventually.h"
#include "tests/support/TempFolder.h"
#include "vocabulary/Events.h"

using namespace TTS;

namespace voxtreld {
namespace {

const std::string kManagerDied =
    "voxtreld: the service manager has died: new clients find the service when it is there again";
const std::string kRegisteredAgain =
    "voxtreld: registered again, with the service manager that has been started";
const std::string kOtherAnswers =
    "voxtreld: another service answers under this one's name: end that one first";

bool has(const Lines& lines, const std::string& part) {
    for (const std::string& line : lines) {
        if (line.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

class ARegisteredService : public testing::Test {
protected:
    ARegisteredService() {
        setenv("VOXTREL_BINDER_SOCKET", socket.c_str(), 1);
        unsetenv("VOXTREL_BINDER_DRIVER");
        unsetenv("VOXTREL_LOG_LEVEL");
        startManager();
    }

    void startManager() { manager = voxtreld::startManager(); }
    void killManager() {
        manager->kill(SIGKILL);
        EXPECT_EQ(128 + SIGKILL, manager->wait());
    }
    Process start(const std::string& profile = "voxtrel.ini") {
        return startProcess(
            {VOXTREL_SERVICE, "--sink", "none", "--real-time", "--profile", folder.path(profile)});
    }
    Process startReady(const std::string& profile = "voxtrel.ini") {
        Process service = start(profile);
        service->readUntil("voxtreld: ready");
        return service;
    }
    static void expectSpeech() {
        const Process client = startClient();
        client->say("say 1 Hello.");
        client->readUntil("event " + std::to_string(EVENT_FINISHED) + " 1 0");
    }
    static void expectToEndWith(ChildProcess& service, const std::string& line) {
        EXPECT_EQ(Lines{line}, service.readUntil(line));
        EXPECT_EQ(1, service.wait());
    }
    /// From then on its signals are its own business.
    void awaitItsProfile(const std::string& profile = "voxtrel.ini") const {
        EXPECT_TRUE(voxtrel_test::eventually(
            [&] { return std::filesystem::exists(folder.path(profile + ".lock")); }));
    }

    voxtrel_test::TempFolder folder;
    const std::string socket = folder.path("binder");
    Process manager;
};

TEST_F(ARegisteredService, SaysThatTheSocketIsMissingAndLeaves) {
    killManager();
    std::filesystem::remove(socket);
    const auto begin = std::chrono::steady_clock::now();
    const Process service = start();
    expectToEndWith(*service, "voxtreld: the service manager cannot be reached: the socket '" +
                                  socket +
                                  "': No such file or directory: start voxtrel-servicemanager, or "
                                  "name its socket in VOXTREL_BINDER_SOCKET");
    EXPECT_LE(kManagerTimeout, std::chrono::steady_clock::now() - begin);
}

TEST_F(ARegisteredService, EndsOnASignalWhileItWaitsForTheSocket) {
    std::filesystem::remove(socket);
    const Process service = start();
    awaitItsProfile();
    service->kill(SIGTERM);
    EXPECT_EQ(Lines{"voxtreld: stopped"}, service->readUntil("voxtreld: stopped"));
    EXPECT_EQ(0, service->wait());
}

TEST_F(ARegisteredService, SaysThatTheSocketIsNoneAndLeaves) {
    const std::string file = folder.path("file");
    voxtrel_test::writeFile(file, "");
    setenv("VOXTREL_BINDER_SOCKET", file.c_str(), 1);
    const Process service = start();
    expectToEndWith(*service, "voxtreld: the service manager cannot be reached: '" + file +
                                  "' is no socket: start voxtrel-servicemanager, or name its "
                                  "socket in VOXTREL_BINDER_SOCKET");
}

TEST_F(ARegisteredService, SaysThatTheDriverIsMissingAndLeaves) {
    const std::string driver = folder.path("driver");
    setenv("VOXTREL_BINDER_DRIVER", driver.c_str(), 1);
    const auto begin = std::chrono::steady_clock::now();
    const Process service = start();
    expectToEndWith(*service, "voxtreld: the service manager cannot be reached: the driver '" +
                                  driver +
                                  "': No such file or directory: load the binder driver, and let "
                                  "this user open it");
    EXPECT_LE(kManagerTimeout, std::chrono::steady_clock::now() - begin);
}

TEST_F(ARegisteredService, SaysThatTheDriverIsNoneAndLeaves) {
    setenv("VOXTREL_BINDER_DRIVER", socket.c_str(), 1);
    const Process service = start();
    expectToEndWith(*service, "voxtreld: the service manager cannot be reached: '" + socket +
                                  "' is no driver: load the binder driver, and let this user "
                                  "open it");
}

TEST_F(ARegisteredService, SaysThatNoManagerIsBehindTheSocketAndLeaves) {
    killManager();
    const auto begin = std::chrono::steady_clock::now();
    const Process service = start();
    expectToEndWith(*service, "voxtreld: no service manager answers at the socket '" + socket +
                                  "': start it first (on a PC: voxtrel-servicemanager)");
    EXPECT_LE(kManagerTimeout, std::chrono::steady_clock::now() - begin);
}

TEST_F(ARegisteredService, DoesNotWaitForEverForAManagerThatHangs) {
    manager->kill(SIGSTOP);
    const Process service = start();
    expectToEndWith(*service,
                    "voxtreld: the service manager at the socket '" + socket +
                        "' has not registered the service within 10 s: it may hang; start it "
                        "again");
}

TEST_F(ARegisteredService, EndsOnASignalWhileTheManagerHangs) {
    manager->kill(SIGSTOP);
    const Process service = start();
    awaitItsProfile();
    service->kill(SIGTERM);
    EXPECT_EQ(Lines{"voxtreld: stopped"}, service->readUntil("voxtreld: stopped"));
    EXPECT_EQ(0, service->wait());
}

TEST_F(ARegisteredService, IsFoundAgainAfterEachRestartOfItsManager) {
    constexpr std::chrono::seconds kLongest(5);  // a tenth of a second where nothing else runs
    const Process service = startReady();
    for (int round = 0; round < 3; ++round) {
        killManager();
        service->readUntil(kManagerDied);
        startManager();
        const auto begin = std::chrono::steady_clock::now();
        service->readUntil(kRegisteredAgain);
        EXPECT_GT(kLongest, std::chrono::steady_clock::now() - begin);
        expectSpeech();
    }
    service->kill(SIGTERM);
    EXPECT_EQ(Lines{"voxtreld: stopped"}, service->readUntil("voxtreld: stopped"));
    EXPECT_EQ(0, service->wait());
}

TEST_F(ARegisteredService, SpeaksOnWhileItsManagerIsStartedAgain) {
    const Process service = startReady();
    const Process client = startClient();
    client->say("say 1 A sentence that is long enough for somebody to start a program meanwhile.");
    client->readUntil("event " + std::to_string(EVENT_STARTED) + " 1 0");
    killManager();
    service->readUntil(kManagerDied);
    startManager();
    service->readUntil(kRegisteredAgain);
    client->readUntil("event " + std::to_string(EVENT_FINISHED) + " 1 0");
    client->say("say 2 And another one.");
    client->readUntil("event " + std::to_string(EVENT_FINISHED) + " 2 0");
    expectSpeech();
}

TEST_F(ARegisteredService, EndsInOrderWhileItsManagerIsAway) {
    const Process service = startReady();
    killManager();
    service->readUntil(kManagerDied);
    service->kill(SIGTERM);
    service->readUntil("voxtreld: stopped");
    EXPECT_EQ(0, service->wait());
}

TEST_F(ARegisteredService, StaysTheOneWhenASecondIsStarted) {
    const Process first = startReady();
    const Process second = start("second.ini");
    expectToEndWith(*second, kOtherAnswers);
    expectSpeech();
    manager->kill(SIGTERM);
    const Lines said = manager->readUntil("voxtrel-servicemanager: stopped");
    EXPECT_TRUE(has(
        said, "added tavix.ITextToSpeechFestival (process " + std::to_string(first->pid()) + ","));
    EXPECT_FALSE(has(said, "(process " + std::to_string(second->pid()) + ","));
}

TEST_F(ARegisteredService, TakesTheNameOfOneThatDoesNotAnswer) {
    const Process first = startReady();
    first->kill(SIGSTOP);
    const Process second = start("second.ini");
    const Lines said = second->readUntil("voxtreld: ready");
    EXPECT_EQ(
        "voxtreld: the service that has this one's name does not answer: its name is taken over",
        said.front());
    expectSpeech();
    second->kill(SIGTERM);
    second->readUntil("voxtreld: stopped");
    EXPECT_EQ(0, second->wait());
}

TEST_F(ARegisteredService, IsFoundAgainWhenTheOneThatTookItsNameHasEnded) {
    const Process first = startReady();
    first->kill(SIGSTOP);
    const Process second = startReady("second.ini");
    second->kill(SIGTERM);
    second->readUntil("voxtreld: stopped");
    EXPECT_EQ(0, second->wait());
    first->kill(SIGCONT);
    first->readUntil(
        "voxtreld: registered again: the service manager did not give the service under its name");
    expectSpeech();
}

TEST_F(ARegisteredService, LeavesWhenAnotherTookItsNameWhileItWasStopped) {
    const Process first = startReady();
    first->kill(SIGSTOP);
    const Process second = startReady("second.ini");
    first->kill(SIGCONT);
    first->readUntil(kOtherAnswers);
    EXPECT_EQ(1, first->wait());
    expectSpeech();
}

TEST_F(ARegisteredService, SpeaksAndEndsOnASignalWhileTheManagerThatRegisteredItHangs) {
    const Process service = startReady();
    const Process client = startClient();
    manager->kill(SIGSTOP);
    client->say(
        "say 1 It takes some seconds to speak this, and once a second the name is looked "
        "up, which nobody answers now.");
    client->readUntil("event " + std::to_string(EVENT_FINISHED) + " 1 0");
    service->kill(SIGTERM);
    service->readUntil("voxtreld: stopped");
    EXPECT_EQ(0, service->wait());
}

TEST_F(ARegisteredService, LeavesWhenAnotherHasTakenItsPlaceAtANewManager) {
    const Process first = startReady();
    first->kill(SIGSTOP);
    killManager();
    startManager();
    const Process second = startReady("second.ini");
    first->kill(SIGCONT);
    expectSpeech();
    first->readUntil(kOtherAnswers);
    EXPECT_EQ(1, first->wait());
    expectSpeech();
}

}  // namespace
}  // namespace voxtreld
