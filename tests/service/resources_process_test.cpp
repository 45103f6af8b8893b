// SPDX-License-Identifier: Apache-2.0
// What a running service takes of the machine, and for how many.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
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

TEST_F(ARunningService, SleepsWhileNobodyWantsAnything) {
    const Process service = startService({"--sink", "none"});
    const Process client = startClient();
    client->say("say 1 Warm up.");
    client->readUntil(eventLine(EVENT_FINISHED, 1, 0));
    const long before = processorTicks(service->pid());
    std::this_thread::sleep_for(std::chrono::seconds(1));  // what is measured is this second
    EXPECT_LE(processorTicks(service->pid()) - before, 1) << "hundredths of a second";
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
