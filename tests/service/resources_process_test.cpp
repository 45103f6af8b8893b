// SPDX-License-Identifier: Apache-2.0
// What a running service takes of the machine, and for how many.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/service/RunningService.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

size_t residentKilobytes(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::strtoul(line.c_str() + 6, nullptr, 10);
        }
    }
    return 0;
}

const std::string kSleeps = "voluntary_ctxt_switches:";

/// A sanitizer's own thread wakes ten times a second.
constexpr size_t kSeldom = 15;

/// How often the threads of a process have gone to sleep: once for each time that they were woken.
size_t sleeps(pid_t pid) {
    size_t count = 0;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::ifstream status(task.path() / "status");
        for (std::string line; std::getline(status, line);) {
            if (line.rfind(kSleeps, 0) == 0) {
                count += std::strtoul(line.c_str() + kSleeps.size(), nullptr, 10);
            }
        }
    }
    return count;
}

/// Processor time that a process has used, in hundredths of a second.
long processorTicks(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(file, line);
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    std::string skipped;
    for (int i = 0; i < 11; ++i) {
        fields >> skipped;
    }
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return user + system;
}

struct Used {
    size_t sleeps;
    long ticks;
};

/// In the second that begins now.
Used usedInASecond(pid_t pid) {
    const Used before = {sleeps(pid), processorTicks(pid)};
    std::this_thread::sleep_for(std::chrono::seconds(1));  // what is measured is this second
    return {sleeps(pid) - before.sleeps, processorTicks(pid) - before.ticks};
}

TEST_F(ARunningService, SleepsWhileNobodyWantsAnything) {
    const Process service = startService({"--sink", "none"});
    const Process client = startClient();
    client->say("say 1 Warm up.");
    client->readUntil(eventLine(EVENT_FINISHED, 1, 0));
    // What was said last is still being put away.
    while (usedInASecond(service->pid()).sleeps > kSeldom) {
    }
    const Used used = usedInASecond(service->pid());
    EXPECT_LE(used.sleeps, kSeldom) << "times in a second";
    EXPECT_LT(used.ticks, 50) << "hundredths of a second: it runs without ever going to sleep";
}

TEST_F(ARunningService, DoesNotGrowWithTheLengthOfAText) {
    const Process service = startService({"--sink", "none"});
    const Process client = startClient();
    client->say("say 1 Warm up.");
    client->readUntil(eventLine(EVENT_FINISHED, 1, 0));
    client->say("long 2 500000");
    client->readUntil(eventLine(EVENT_WORD, 2, 1300));
    const size_t before = residentKilobytes(service->pid());
    client->readUntil(eventLine(EVENT_WORD, 2, 52000));
    const size_t after = residentKilobytes(service->pid());
    client->say("stop 0");
    client->readUntil(eventLine(EVENT_STOPPED, 2, 0));
    EXPECT_GT(before, 0U);
    // What has been spoken by then would be hundreds of megabytes of sound.
    EXPECT_LT(after, before + 4096) << "kilobytes";
}

TEST_F(ARunningService, DoesNotPermitTheClientForWhichItHasNoRoom) {
    const Process service = startService({"--sink", "none"});
    std::vector<Process> clients(128);
    for (Process& client : clients) {
        client = startProcess({VOXTREL_SPEECH_CLIENT});
        client->say("connect");
    }
    for (const Process& client : clients) {
        client->readUntil("connect 0");
    }
    ChildProcess late(Lines{VOXTREL_SPEECH_CLIENT}, kWithOutput);
    late.say("connect");
    late.readUntil("connect " + std::to_string(STATUS_PERMISSION_DENIED));
}

}  // namespace
}  // namespace voxtreld
