// SPDX-License-Identifier: Apache-2.0
// Nobody is kept waiting by a program that is stopped.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <chrono>
#include <csignal>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/ForeignService.h"

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

constexpr const char* kLong =
    "The last train had left the station an hour ago. A man in a grey coat stood on the platform "
    "and read the timetable once more, although he knew every line of it. Then it began to rain.";

/// A hundred milliseconds on a machine that has nothing else to do.
constexpr auto kSoon = std::chrono::seconds(5);

/// A device of which the service, or the service manager, is stopped until the test ends.
class AStoppedProcess : public ::testing::Test {
protected:
    AStoppedProcess() {
        device.startService({"--sink", "none", "--real-time"});
        EXPECT_EQ(device.ctl({"profile", "save", profile}).status, 0);
    }
    ~AStoppedProcess() override { (void)kill(stopped, SIGCONT); }

    void stop(pid_t process) {
        stopped = process;
        int status = 0;
        ASSERT_EQ(kill(process, SIGSTOP), 0);
        ASSERT_EQ(waitpid(process, &status, WUNTRACED), process);
    }

    std::vector<std::unique_ptr<ChildProcess>> startAll(const std::string& timeout) {
        std::vector<Device::Words> all = kCommands;
        all.push_back({"profile", "load", profile});
        for (Device::Words& words : all) {
            words.insert(words.end(), {"--timeout", timeout});
        }
        all.push_back({"lock", "--timeout", timeout, "--", "true"});
        std::vector<std::unique_ptr<ChildProcess>> running;
        for (const Device::Words& words : all) {
            running.push_back(device.start(words));
        }
        return running;
    }

    void expectEveryCommandToEndWith(const std::string& detail) {
        const auto running = startAll("4");
        const Outcome doctor = device.ctl({"doctor"});
        EXPECT_EQ(doctor.status, 1);
        EXPECT_NE(doctor.out.find("  " + detail), std::string::npos) << doctor.out;
        for (const auto& each : running) {
            const Outcome outcome = each->finish();
            EXPECT_EQ(outcome.status, 1);
            EXPECT_NE(outcome.err.find("voxtrelctl: -5 no connection to the service: " + detail),
                      std::string::npos)
                << outcome.err;
        }
    }

    static Outcome endedBy(int signal, ChildProcess& process) {
        const auto begin = std::chrono::steady_clock::now();
        process.kill(signal);
        Outcome outcome = process.finish();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, kSoon);
        return outcome;
    }

    void expectEndOn(int signal) {
        for (const auto& each : startAll("600")) {
            if (!each->awaitError("does not answer")) {
                FAIL() << each->finish().err;
            }
            const Outcome outcome = endedBy(signal, *each);
            EXPECT_EQ(outcome.status, 1);
            EXPECT_NE(outcome.err.find("voxtrelctl: interrupted\n"), std::string::npos)
                << outcome.err;
        }
    }

    Device device;
    const std::string profile = device.path("profile.ini");
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

TEST_F(AStoppedProcess, OfTheServiceKeepsTheDoctorFromNoSignal) {
    stop(device.servicePid());
    const auto doctor = device.start({"doctor"});
    ASSERT_TRUE(eventually([&] { return doctor->blocks(SIGINT); }));
    const Outcome outcome = endedBy(SIGINT, *doctor);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
}

TEST_F(AStoppedProcess, OfTheServiceInMidSpeechIsNamedInTime) {
    const auto speaker = device.start({"say", "--wait", "--timeout", "4", kLong});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 4: last"));
    stop(device.servicePid());
    const Outcome outcome = speaker->finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "voxtrelctl: -5 no connection to the service: the service does not "
              "answer (process " +
                  std::to_string(stopped) + " is stopped): continue it with: kill -CONT " +
                  std::to_string(stopped) + "\n");
}

TEST_F(AStoppedProcess, OfTheServiceInMidSpeechKeepsNobodyFromLeaving) {
    const auto speaker = device.start({"say", "--wait", "--timeout", "600", kLong});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 4: last"));
    stop(device.servicePid());
    const Outcome outcome = endedBy(SIGINT, *speaker);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "voxtrelctl: interrupted\n");
    EXPECT_NE(outcome.out.find("stopped 1 (flushed)\n"), std::string::npos) << outcome.out;
}

TEST_F(AStoppedProcess, OfTheServiceManagerDisturbsNoSpeech) {
    const auto speaker = device.start({"say", "--wait", "--speed", "400", kLong});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 4: last"));
    stop(device.managerPid());
    const Outcome outcome = speaker->finish();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("finished 1\n"), std::string::npos) << outcome.out;
}

TEST(AReaderThatDoesNotRead, KeepsNobodyFromLeaving) {
    Device device;  // without a service, so that it is looked for
    const std::string path = device.path("reader");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int reader = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const std::string page(4096, ' ');
    while (write(reader, page.data(), page.size()) > 0) {
    }
    const ChildProcess waiting(
        {"sh", "-c", "exec " + Device::control() + " status --timeout 600 >" + path + " 2>&1"}, "");
    ASSERT_TRUE(eventually([&] { return waiting.blocks(SIGTERM); }));
    waiting.kill(SIGTERM);
    siginfo_t ended = {};
    EXPECT_TRUE(eventually([&] {
        return waitid(P_PID, static_cast<id_t>(waiting.pid()), &ended,
                      WEXITED | WNOHANG | WNOWAIT) == 0 &&
               ended.si_pid == waiting.pid();
    }));
    close(reader);
}

/// Needs six seconds to serve what it is sent, and then hangs when a client leaves.
class FreezingService : public ForeignService {
public:
    int silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) override {
        std::this_thread::sleep_for(std::chrono::seconds(6));
        return ForeignService::silence(pid, first, second, bgVolume);
    }

    int deregisterCallback(unsigned pid) override {
        mMayGoOn.wait();
        return ForeignService::deregisterCallback(pid);
    }

    void goOnForAll() { mGoOn.set_value(); }

private:
    std::promise<void> mGoOn;
    const std::shared_future<void> mMayGoOn = mGoOn.get_future().share();
};

TEST(AServiceThatFreezesWhenItIsLeft, KeepsNobodyForLongerThanTheTimeout) {
    Device device;
    android::ProcessState::self()->startThreadPool();
    const android::sp<FreezingService> service = new FreezingService;
    service->neverEnd(1);
    ASSERT_EQ(android::OK, android::defaultServiceManager()->addService(
                               TTS::ITextToSpeechFestival::descriptor, service));
    const auto begin = std::chrono::steady_clock::now();
    const Outcome outcome = device.ctl({"say", "--timeout", "10", "x"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(14));
    service->goOnForAll();
}

}  // namespace
