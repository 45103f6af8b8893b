// SPDX-License-Identifier: Apache-2.0
#include "tests/service/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <string_view>

namespace voxtreld {
namespace {

constexpr std::chrono::seconds kPatience(30);

/// Allocates nothing: a thread of the parent's may have held the allocator when it forked.
[[noreturn]] void become(char* const* arguments, int input, int output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that crashes leaves nothing running
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execv(arguments[0], arguments);
    const std::string_view failed = "the program cannot be run\n";
    (void)!write(STDERR_FILENO, failed.data(), failed.size());
    _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
    int input[2] = {-1, -1};
    int output[2] = {-1, -1};
    if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipes for " << command[0];
        return;
    }
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    mPid = fork();
    if (mPid == 0) {
        become(arguments.data(), input[0], output[1]);
    }
    close(input[0]);
    close(output[1]);
    mInput = input[1];
    mOutput = output[0];
}

ChildProcess::~ChildProcess() {
    if (mPid > 0) {
        signal(SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    close(mInput);
    close(mOutput);
}

void ChildProcess::tell(const std::string& line) {
    const std::string text = line + "\n";
    ASSERT_EQ(static_cast<ssize_t>(text.size()), write(mInput, text.data(), text.size()));
}

void ChildProcess::closeInput() {
    close(mInput);
    mInput = -1;
}

bool ChildProcess::readLine(std::string& line) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        const size_t end = mBuffer.find('\n');
        if (end != std::string::npos) {
            line = mBuffer.substr(0, end);
            mBuffer.erase(0, end + 1);
            return true;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd ready = {mOutput, POLLIN, 0};
        if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) == 0) {
            return false;
        }
        char chunk[65536];
        const ssize_t got = read(mOutput, chunk, sizeof chunk);
        if (got == 0 || (got < 0 && errno != EINTR)) {
            return false;
        }
        mBuffer.append(chunk, got > 0 ? static_cast<size_t>(got) : 0);
    }
}

ChildProcess::Lines ChildProcess::readUntil(
    const std::function<bool(const std::string& line)>& isLast) {
    Lines lines;
    std::string line;
    while (readLine(line)) {
        lines.push_back(line);
        if (isLast(line)) {
            return lines;
        }
    }
    ADD_FAILURE() << "the line that was waited for did not come; the last of " << lines.size()
                  << " was: " << (lines.empty() ? "" : lines.back());
    return lines;
}

ChildProcess::Lines ChildProcess::readUntil(const std::string& line) {
    SCOPED_TRACE("waiting for: " + line);
    return readUntil([&](const std::string& each) { return each == line; });
}

void ChildProcess::signal(int number) const {
    kill(mPid, number);
}

int ChildProcess::wait() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    int status = 0;
    while (waitpid(mPid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << "process " << mPid << " does not end";
            return -1;
        }
        poll(nullptr, 0, 1);
    }
    mPid = -1;
    return WIFSIGNALED(status) ? 256 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace voxtreld
