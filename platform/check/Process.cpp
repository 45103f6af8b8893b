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
#include <utility>

#include "check/Row.h"

namespace check {
namespace {

using std::chrono::milliseconds;

int millisecondsUntil(Deadline deadline) {
    const auto left =
        std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<milliseconds::rep>(left.count(), 0));
}

[[noreturn]] void become(char* const* argv, int input, int report, bool isQuiet) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // it goes when this process goes, however that ends
    dup2(input, STDIN_FILENO);
    if (isQuiet) {
        dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    }
    dup2(STDERR_FILENO, STDOUT_FILENO);
    fcntl(report, F_SETFD, 0);
    execv("/proc/self/exe", argv);
    _exit(Process::kNotRun);
}

/// Whose ends close, unless they were taken.
class Pipe {
public:
    Pipe() {
        if (pipe2(mEnds, O_CLOEXEC) != 0) {
            throw CannotCheck("there is no pipe to a process of its own");
        }
    }
    ~Pipe() {
        for (const int end : mEnds) {
            close(end);
        }
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int readEnd() const { return mEnds[0]; }
    int writeEnd() const { return mEnds[1]; }
    int takeReadEnd() { return std::exchange(mEnds[0], -1); }
    int takeWriteEnd() { return std::exchange(mEnds[1], -1); }

private:
    int mEnds[2] = {-1, -1};
};

}  // namespace

Deadline soon() {
    return std::chrono::steady_clock::now() + kSoon;
}

Process::Process(const std::vector<std::string>& arguments, bool isQuiet) {
    Pipe input;
    Pipe report;
    std::vector<std::string> words = {"voxtrel-platform-check"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    words.push_back(std::to_string(report.writeEnd()));
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    mPid = fork();
    if (mPid == 0) {
        become(argv.data(), input.readEnd(), report.writeEnd(), isQuiet);
    }
    if (mPid < 0) {
        throw CannotCheck("no process of its own could be started");
    }
    mInput = input.takeWriteEnd();
    mReport = report.takeReadEnd();
}

Process::~Process() {
    kill();
    int status = 0;
    // One that the kernel does not let go, say in a driver, is not waited for without end.
    (void)waitForEnd(status, soon());
    close(mInput);
    close(mReport);
}

bool Process::readLine(std::string& line, Deadline deadline) {
    for (;;) {
        const size_t end = mUnread.find('\n');
        if (end != std::string::npos) {
            line = mUnread.substr(0, end);
            mUnread.erase(0, end + 1);
            return true;
        }
        pollfd ready = {mReport, POLLIN, 0};
        char bytes[512];
        const int left = millisecondsUntil(deadline);
        if (left == 0 || poll(&ready, 1, left) <= 0) {
            return false;
        }
        const ssize_t count = read(mReport, bytes, sizeof bytes);
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
        if (waitpid(mPid, &how, WNOHANG) == mPid) {
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
