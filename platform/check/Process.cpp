// SPDX-License-Identifier: Apache-2.0
#include "check/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <thread>

namespace check {
namespace {

using std::chrono::milliseconds;

int millisecondsUntil(Deadline deadline) {
    const auto left =
        std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<milliseconds::rep>(left.count(), 0));
}

[[noreturn]] void become(const std::vector<std::string>& arguments, bool isQuiet) {
    std::vector<char*> argv = {const_cast<char*>("voxtrel-platform-check")};
    for (const std::string& each : arguments) {
        argv.push_back(const_cast<char*>(each.c_str()));
    }
    argv.push_back(nullptr);
    if (isQuiet) {
        const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nothing, STDERR_FILENO);
    }
    execv("/proc/self/exe", argv.data());
    _exit(127);
}

}  // namespace

Process::Process(const std::vector<std::string>& arguments, bool isQuiet) {
    int input[2];
    int output[2];
    if (pipe2(input, O_CLOEXEC) != 0) {
        return;
    }
    if (pipe2(output, O_CLOEXEC) != 0) {
        close(input[0]);
        close(input[1]);
        return;
    }
    mPid = fork();
    if (mPid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // it goes when this process goes, however that ends
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        become(arguments, isQuiet);
    }
    close(input[0]);
    close(output[1]);
    mInput = input[1];
    mOutput = output[0];
}

Process::~Process() {
    kill();
    int status = 0;
    (void)waitForEnd(status, Deadline::max());
    close(mInput);
    close(mOutput);
}

bool Process::readLine(std::string& line, Deadline deadline) {
    for (;;) {
        const size_t end = mUnread.find('\n');
        if (end != std::string::npos) {
            line = mUnread.substr(0, end);
            mUnread.erase(0, end + 1);
            return true;
        }
        pollfd ready = {mOutput, POLLIN, 0};
        char bytes[512];
        if (poll(&ready, 1, millisecondsUntil(deadline)) <= 0) {
            return false;
        }
        const ssize_t count = read(mOutput, bytes, sizeof bytes);
        if (count <= 0) {
            return false;
        }
        mUnread.append(bytes, static_cast<size_t>(count));
    }
}

void Process::kill() {
    if (mPid > 0) {
        ::kill(mPid, SIGKILL);
    }
}

bool Process::waitForEnd(int& status, Deadline deadline) {
    while (mPid > 0) {
        int how = 0;
        if (waitpid(mPid, &how, deadline == Deadline::max() ? 0 : WNOHANG) == mPid) {
            mPid = -1;
            status = WIFSIGNALED(how) ? -WTERMSIG(how) : WEXITSTATUS(how);
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(milliseconds(2));
    }
    return true;
}

}  // namespace check
