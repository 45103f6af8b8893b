// SPDX-License-Identifier: Apache-2.0
#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <utility>

#include "tests/support/Roles.h"

extern char** environ;  // NOLINT: POSIX

namespace voxtrel_test {

namespace {

constexpr int kPatienceMs = 60000;

std::vector<std::string> emulated(const std::vector<std::string>& command) {
    std::vector<std::string> full;
#ifdef VOXTREL_TEST_EMULATOR
    const bool ours = command[0].find('/') != std::string::npos;
    std::istringstream words(ours ? VOXTREL_TEST_EMULATOR : "");
    for (std::string word; words >> word;) {
        full.push_back(word);
    }
#endif
    full.insert(full.end(), command.begin(), command.end());
    return full;
}

pid_t spawn(const std::vector<std::string>& command, int input, int output) {
    std::vector<char*> arguments;
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t pid = -1;
    const int failed =
        posix_spawnp(&pid, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed == 0 ? pid : -1;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
    int toChild[2];
    int fromChild[2];
    if (pipe2(toChild, O_CLOEXEC) != 0) {
        return;
    }
    if (pipe2(fromChild, O_CLOEXEC) != 0) {
        close(toChild[0]);
        close(toChild[1]);
        return;
    }
    mPid = spawn(emulated(command), toChild[0], fromChild[1]);
    close(toChild[0]);
    close(fromChild[1]);
    mInput = toChild[1];
    mOutput = fromChild[0];
}

ChildProcess ChildProcess::asRole(const std::string& role,
                                  const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {ownPath(), kRoleArgument + role};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return ChildProcess(command);
}

ChildProcess ChildProcess::asRoleWithErrors(const std::string& role) {
    std::string command = "exec";
    for (const std::string& word : emulated({ownPath(), kRoleArgument + role})) {
        command += " '" + word + "'";
    }
    return ChildProcess({"sh", "-c", command + " 2>&1"});
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : mPid(std::exchange(other.mPid, -1)),
      mInput(std::exchange(other.mInput, -1)),
      mOutput(std::exchange(other.mOutput, -1)),
      mBuffer(std::move(other.mBuffer)) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this != &other) {
        finish();
        mPid = std::exchange(other.mPid, -1);
        mInput = std::exchange(other.mInput, -1);
        mOutput = std::exchange(other.mOutput, -1);
        mBuffer = std::move(other.mBuffer);
    }
    return *this;
}

ChildProcess::~ChildProcess() {
    finish();
}

void ChildProcess::finish() {
    if (mPid > 0) {
        killNow();
    }
    closeInput();
    if (mOutput >= 0) {
        close(std::exchange(mOutput, -1));
    }
}

std::string ChildProcess::readLine() {
    for (;;) {
        const size_t end = mBuffer.find('\n');
        if (end != std::string::npos) {
            std::string line = mBuffer.substr(0, end);
            mBuffer.erase(0, end + 1);
            return line;
        }
        pollfd request = {mOutput, POLLIN, 0};
        const int ready = poll(&request, 1, kPatienceMs);
        char chunk[4096];
        const ssize_t got = ready > 0 ? read(mOutput, chunk, sizeof(chunk)) : ready;
        if (got > 0) {
            mBuffer.append(chunk, static_cast<size_t>(got));
        } else if (got == 0 || errno != EINTR) {
            return {};
        }
    }
}

bool ChildProcess::say(const std::string& line) {
    const std::string text = line + "\n";
    return write(mInput, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

std::string ChildProcess::ask(const std::string& line) {
    return say(line) ? readLine() : std::string();
}

void ChildProcess::closeInput() {
    if (mInput >= 0) {
        close(std::exchange(mInput, -1));
    }
}

void ChildProcess::kill(int signal) {
    if (mPid > 0) {
        ::kill(mPid, signal);
    }
}

void ChildProcess::killNow() {
    kill(SIGKILL);
    (void)wait();  // its status is what we made it
}

int ChildProcess::wait() {
    int status = 0;
    if (mPid <= 0) {
        return -1;
    }
    while (waitpid(mPid, &status, 0) < 0 && errno == EINTR) {
    }
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace voxtrel_test
