// SPDX-License-Identifier: Apache-2.0
// Nobody is kept waiting by a program that is stopped.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;

namespace {

/// All that need the service; `doctor` has its own way to say so.
const std::vector<Device::Words> kCommands = {
    {"say", "x"},
    {"say", "--wait", "x"},
    {"silence", "1"},
    {"stop"},
    {"break-lock"},
    {"status"},
    {"languages"},
    {"voices"},
    {"get"},
    {"set", "speed", "100"},
    {"enable"},
    {"disable", "pitch"},
    {"profile", "save", "p.ini"},
    {"monitor"},
};

/// A device of which the service, or the service manager, is stopped until the test ends.
class AStoppedProcess : public ::testing::Test {
protected:
    AStoppedProcess() { device.startService({"--sink", "none"}); }
    ~AStoppedProcess() override { (void)kill(stopped, SIGCONT); }

    void stop(pid_t process) {
        stopped = process;
        int status = 0;
        ASSERT_EQ(kill(process, SIGSTOP), 0);
        ASSERT_EQ(waitpid(process, &status, WUNTRACED), process);
    }

    void expectEveryCommandToEndWith(const std::string& detail) {
        std::vector<std::unique_ptr<Process>> running;
        for (Device::Words words : kCommands) {
            words.insert(words.end(), {"--timeout", "4"});
            running.push_back(device.start(words));
        }
        running.push_back(device.start({"lock", "--timeout", "4", "--", "true"}));
        const Outcome doctor = device.ctl({"doctor"});
        EXPECT_EQ(doctor.status, 1);
        EXPECT_NE(doctor.out.find("  " + detail), std::string::npos) << doctor.out;
        for (const auto& each : running) {
            const Outcome outcome = each->wait();
            EXPECT_EQ(outcome.status, 1);
            EXPECT_NE(outcome.err.find("voxtrelctl: -5 no connection to the service: " + detail),
                      std::string::npos)
                << outcome.err;
        }
    }

    void expectEndOn(int signal) {
        std::vector<std::unique_ptr<Process>> running;
        for (Device::Words words : kCommands) {
            words.insert(words.end(), {"--timeout", "600"});
            running.push_back(device.start(words));
        }
        for (const auto& each : running) {
            if (!each->awaitError("does not answer")) {
                FAIL() << each->wait().err;
            }
            each->signal(signal);
            const Outcome outcome = each->wait();
            EXPECT_EQ(outcome.status, 1);
            EXPECT_NE(outcome.err.find("voxtrelctl: interrupted\n"), std::string::npos)
                << outcome.err;
        }
    }

    Device device;
    pid_t stopped = 0;
};

TEST_F(AStoppedProcess, OfTheServiceIsNamedInTime) {
    stop(device.servicePid());
    expectEveryCommandToEndWith("the service does not answer (process " + std::to_string(stopped) +
                                " is stopped)");
}

TEST_F(AStoppedProcess, OfTheServiceManagerIsNamedInTime) {
    stop(device.managerPid());
    expectEveryCommandToEndWith("the service manager does not answer (process " +
                                std::to_string(stopped) + " is stopped)");
}

TEST_F(AStoppedProcess, OfTheServiceKeepsNobodyFromLeaving) {
    stop(device.servicePid());
    expectEndOn(SIGINT);
    expectEndOn(SIGTERM);
}

TEST_F(AStoppedProcess, OfTheServiceManagerKeepsNobodyFromLeaving) {
    stop(device.managerPid());
    expectEndOn(SIGINT);
    expectEndOn(SIGTERM);
}

}  // namespace
