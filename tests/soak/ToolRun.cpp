// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/ToolRun.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace soak {
namespace {

/// Allocates nothing: a thread of the parent's may have held the allocator when it forked.
[[noreturn]] void become(char* const* words, const char* output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int input = open("/dev/null", O_RDONLY);
    const int file = open(output, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(input, STDIN_FILENO);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    execv(words[0], words);
    _exit(127);
}

}  // namespace

ToolRun::ToolRun(const std::vector<std::string>& words, const std::string& output) {
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    mProcess = fork();
    if (mProcess == 0) {
        become(arguments.data(), output.c_str());
    }
    mEnd = mProcess > 0 ? static_cast<int>(syscall(SYS_pidfd_open, mProcess, 0)) : -1;
    if (mEnd < 0) {
        throw std::runtime_error("cannot start " + words[0]);
    }
}

ToolRun::~ToolRun() {
    if (mStatus < 0) {
        signal(SIGKILL);
        (void)waitFor(Milliseconds(-1));
    }
    close(mEnd);
}

bool ToolRun::waitFor(Milliseconds longest) {
    pollfd end = {mEnd, POLLIN, 0};
    if (poll(&end, 1, static_cast<int>(longest.count())) <= 0) {
        return false;
    }
    int status = 0;
    (void)waitpid(mProcess, &status, 0);
    mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return true;
}

void ToolRun::signal(int number) const {
    kill(mProcess, number);
}

}  // namespace soak
