// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Member.h"

#include <csignal>
#include <fstream>
#include <utility>

namespace soak {
namespace {

/// As in /proc: 'Z' of a process that has ended.
char stateOf(pid_t process) {
    std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(stat, line);
    const std::size_t name = line.rfind(") ");
    return name == std::string::npos || name + 2 >= line.size() ? '?' : line[name + 2];
}

/// The signals of one line of its status, such as "SigBlk:".
unsigned long signalsOf(pid_t process, const std::string& line) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string word;
    while (status >> word && word != line) {
    }
    unsigned long signals = 0;
    status >> std::hex >> signals;
    return signals;
}

}  // namespace

Member::Member(std::string name, std::function<Words(unsigned)> command)
    : mName(std::move(name)), mCommand(std::move(command)) {}

void Member::start() {
    mProcess = std::make_unique<voxtrel_test::ChildProcess>(mCommand(++mLife));
}

bool Member::canBeEnded() const {
    const unsigned long signals = signalsOf(pid(), "SigBlk:") | signalsOf(pid(), "SigCgt:");
    return (signals >> (SIGTERM - 1) & 1UL) != 0;
}

void Member::kill() {
    ++mCounts.kills;
    mProcess->kill(SIGKILL);
    expectStatus(128 + SIGKILL);
}

void Member::stop() {
    ++mCounts.stops;
    mIsStopped = true;
    mProcess->kill(SIGSTOP);
}

void Member::proceed() {
    if (mIsStopped) {
        mIsStopped = false;
        mProcess->kill(SIGCONT);
    }
}

void Member::awaitEnd(int signal) {
    ++mCounts.ends;
    if (signal != 0) {
        mProcess->kill(signal);
    }
    while (!mProcess->readLine().empty()) {  // until it has closed its output, or hangs
    }
    mProcess->kill(SIGKILL);
    expectStatus(0);
}

bool Member::hasLeft() {
    constexpr int kNoManager = 1;
    if (!isAlive() || stateOf(pid()) != 'Z') {
        return false;
    }
    ++mCounts.leaves;
    expectStatus(kNoManager);
    return true;
}

bool Member::say(const std::string& line) {
    // Ignored for no longer than that: the members inherit it.
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    const bool isTaken = mProcess->say(line);
    std::signal(SIGPIPE, handler);
    return isTaken;
}

void Member::expectStatus(int expected) {
    const int status = mProcess->wait();
    if (status != expected) {
        mFindings.push_back(mName + ", life " + std::to_string(mLife) +
                            (status == 128 + SIGKILL
                                 ? std::string(" did not end")
                                 : " ended by itself with status " + std::to_string(status)));
    }
    mProcess.reset();
    mIsStopped = false;
}

}  // namespace soak
