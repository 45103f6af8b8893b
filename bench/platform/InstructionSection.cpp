// SPDX-License-Identifier: Apache-2.0
// The same paths counted in instructions outside of the kernel. Each is the difference between a
// process that does it many times and one that does it a few times. A caller's does not vary at
// all, a service's by some, with the ticks of its timer and how often it comes to sleep.
#include <binder/ProcessState.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "bench/platform/Sections.h"
#include "client/TTSClientPrivate.h"
#include "tests/support/Roles.h"

namespace bench {

using voxtrel_test::ChildProcess;

namespace {

constexpr int kFew = 100;
constexpr int kMany = 1100;
constexpr const char* kCounted = "counted";
const char kBytes[1024] = {};

void callOften(const android::sp<IBench>& node, const std::string& what, int calls) {
    for (int i = 0; i < calls; ++i) {
        if (what == "one-way") {
            node->note(kBytes, 64);
        } else {
            node->echo(kBytes, what == "1k" ? 1024 : 64);
        }
    }
    (void)node->noted();
}

// Makes so many calls and ends.
const voxtrel_test::Role kCaller("bench-caller", [](const voxtrel_test::Arguments& arguments) {
    callOften(findBench(), arguments[0], std::stoi(arguments[1]));
    return 0;
});

void ignore(unsigned /*a*/, unsigned /*b*/, unsigned /*c*/) {}

// An application that says so many things and ends.
const voxtrel_test::Role kSpeaker("bench-speaker", [](const voxtrel_test::Arguments& arguments) {
    android::ProcessState::self()->startThreadPool();
    TTS::TTSClientPrivate client("bench", ignore);
    if (client.connect() != 0) {
        return 1;
    }
    const int sayings = std::stoi(arguments[0]);
    for (int i = 0; i < sayings; ++i) {
        (void)client.say(static_cast<unsigned>(i), "In two hundred metres, turn left.");
    }
    return 0;
});

// An application that joins the service and leaves it so many times.
const voxtrel_test::Role kJoiner("bench-joiner", [](const voxtrel_test::Arguments& arguments) {
    android::ProcessState::self()->startThreadPool();
    for (int left = std::stoi(arguments[0]); left > 0; --left) {
        TTS::TTSClientPrivate client("bench", ignore);
        if (client.connect() != 0) {
            return 1;
        }
    }
    return 0;
});

ChildProcess counted(const std::vector<std::string>& role) {
    std::vector<std::string> command = {"valgrind", "--tool=callgrind",
                                        "--callgrind-out-file=/dev/null", "--log-fd=1",
                                        voxtrel_test::ownPath()};
    command.insert(command.end(), role.begin(), role.end());
    return ChildProcess(command);
}

// What the process has needed from its start to its end; -1 when it could not be counted.
long long collected(ChildProcess& run) {
    const std::string mark = "Collected : ";
    long long count = -1;
    for (std::string line = run.readLine(); !line.empty(); line = run.readLine()) {
        const size_t found = line.find(mark);
        if (found != std::string::npos) {
            count = std::stoll(line.substr(found + mark.size()));
        }
    }
    return run.wait() == 0 ? count : -1;
}

long long callersCount(const char* what, int calls) {
    ChildProcess run = counted({"--role=bench-caller", what, std::to_string(calls)});
    return collected(run);
}

// Of a role that does the same so many times.
long long repeatersCount(const char* role, int times) {
    ChildProcess run = counted({role, std::to_string(times)});
    return collected(run);
}

long long servicesCount(const char* what, int calls) {
    ChildProcess run = counted({"--role=bench-server", kCounted});
    std::string line = run.readLine();
    while (!line.empty() && line != "ready") {
        line = run.readLine();
    }
    if (line.empty()) {
        return -1;
    }
    callOften(findBench(kCounted), what, calls);
    run.closeInput();
    return collected(run);
}

// False when nothing can be counted here.
bool tell(const std::string& what, const std::function<long long(int)>& count) {
    const long long few = count(kFew);
    const long long many = few < 0 ? few : count(kMany);
    if (many < 0) {
        std::printf(
            "no instruction counts: valgrind is not installed, or a program under it failed\n");
        return false;
    }
    std::printf("instructions outside of the kernel, %s: %lld\n", what.c_str(),
                (many - few) / (kMany - kFew));
    std::fflush(stdout);
    return true;
}

}  // namespace

void instructions(const Setting& /*setting*/) {
    for (const char* what : {"64", "1k", "one-way"}) {
        const bool possible = tell(std::string("caller, ") + what,
                                   [&](int calls) { return callersCount(what, calls); }) &&
                              tell(std::string("service, ") + what,
                                   [&](int calls) { return servicesCount(what, calls); });
        if (!possible) {
            return;
        }
    }
    auto service = ChildProcess::asRole("bench-service");
    if (service.readLine() == "ready") {
        const auto counter = [](const char* role) {
            return [role](int times) { return repeatersCount(role, times); };
        };
        (void)tell("a full say of the client", counter("--role=bench-speaker"));
        (void)tell("connect() of a running process", counter("--role=bench-joiner"));
    }
}

}  // namespace bench
