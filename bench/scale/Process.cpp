// SPDX-License-Identifier: Apache-2.0
#include "bench/scale/Process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <sstream>

namespace bench {

namespace {

void makePipe(int (&ends)[2], int flags) {
    if (pipe2(ends, flags) != 0) {
        std::perror("pipe2");
        std::exit(1);
    }
}

/// A failed one must not be taken for a process: to signal -1 is to signal everybody.
pid_t forkOrExit() {
    const pid_t pid = fork();
    if (pid < 0) {
        std::perror("fork");
        std::exit(1);
    }
    return pid;
}

[[noreturn]] void become(const Words& command) {
    std::vector<char*> arguments;
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
}

}  // namespace

Process::Process(const Words& command) {
    int in[2];
    int out[2];
    makePipe(in, O_CLOEXEC);
    makePipe(out, O_CLOEXEC);
    mPid = forkOrExit();
    if (mPid == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        become(command);
    }
    close(in[0]);
    close(out[1]);
    mIn = fdopen(in[1], "w");
    mOut = fdopen(out[0], "r");
}

Process::~Process() {
    ::kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
    std::fclose(mIn);
    std::fclose(mOut);
}

std::string Process::hear() {
    char* line = nullptr;
    size_t size = 0;
    if (getline(&line, &size, mOut) < 0) {
        std::fprintf(stderr, "a process of the benchmark has ended\n");
        std::exit(1);
    }
    std::string heard = line;
    std::free(line);
    return heard;
}

std::vector<double> Process::ask(const std::string& line) {
    std::fprintf(mIn, "%s\n", line.c_str());
    std::fflush(mIn);
    std::istringstream answer(hear());
    std::vector<double> numbers;
    for (double number = 0; answer >> number;) {
        numbers.push_back(number);
    }
    return numbers;
}

Crowd::~Crowd() {
    (void)kill();
    bury();
}

void Crowd::add(const Words& command) {
    if (mMembers.empty()) {
        int ends[2];
        makePipe(ends, 0);
        (void)fcntl(ends[0], F_SETFD, FD_CLOEXEC);
        mAlive = ends[0];
        mHeld = ends[1];
    }
    const pid_t member = forkOrExit();
    if (member == 0) {
        setpgid(0, mGroup);
        become(command);
    }
    mGroup = mGroup == 0 ? member : mGroup;
    setpgid(member, mGroup);  // whoever comes first
    mMembers.push_back(member);
}

int Crowd::kill() {
    if (mHeld >= 0) {
        close(mHeld);
        mHeld = -1;
        (void)::kill(-mGroup, SIGKILL);
    }
    return mAlive;
}

void Crowd::bury() {
    for (const pid_t member : mMembers) {
        waitpid(member, nullptr, 0);
    }
    if (!mMembers.empty()) {
        close(mAlive);
    }
    mMembers.clear();
    mGroup = 0;
}

}  // namespace bench
