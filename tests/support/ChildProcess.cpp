// SPDX-License-Identifier: Apache-2.0
#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "tests/support/Roles.h"

namespace voxtrel_test {
namespace {

/// For a machine under load, with sanitizers.
constexpr std::chrono::seconds kLimit(90);

struct Pipe {
    int ends[2] = {-1, -1};
    explicit Pipe(int flags = 0) {
        if (pipe2(ends, O_CLOEXEC | flags) != 0) {
            throw std::runtime_error("pipe");
        }
    }
};

/// A file that is gone already holds any amount of input, which a pipe does not.
int inputWith(const std::string& input) {
    std::FILE* file = std::tmpfile();
    if (file == nullptr || std::fwrite(input.data(), 1, input.size(), file) != input.size() ||
        std::fflush(file) != 0) {
        throw std::runtime_error("tmpfile");
    }
    const int descriptor = fcntl(fileno(file), F_DUPFD_CLOEXEC, 0);
    std::fclose(file);
    lseek(descriptor, 0, SEEK_SET);
    return descriptor;
}

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

/// The child would be killed at the end of the thread that starts it.
bool isMainThread() {
    return syscall(SYS_gettid) == getpid();
}

/// Allocates nothing: a thread of the parent's may have held the allocator when it forked.
[[noreturn]] void become(char* const* arguments, const int (&standard)[3], bool diesWithParent) {
    if (diesWithParent) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that crashes leaves nothing running
    }
    for (int number = 0; number < 3; ++number) {
        dup2(standard[number], number);
    }
    execvp(arguments[0], arguments);
    _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const Words& command, Errors errors) {
    const Pipe input;
    mInput = input.ends[1];
    start(command, input.ends[0], errors);
}

ChildProcess::ChildProcess(const Words& command, const std::string& input, Errors errors) {
    start(command, inputWith(input), errors);
}

void ChildProcess::start(const Words& command, int input, Errors errors) {
    const Pipe output;
    mOut.descriptor = output.ends[0];
    int error = errors == Errors::WithOutput ? output.ends[1] : STDERR_FILENO;
    mInPieces = errors == Errors::InPieces;
    if (errors == Errors::Apart || mInPieces) {
        const Pipe errorPipe(mInPieces ? O_DIRECT : 0);
        mErr.descriptor = errorPipe.ends[0];
        error = errorPipe.ends[1];
    }
    const Words words = emulated(command);
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const bool diesWithParent = isMainThread();
    mPid = fork();
    if (mPid == 0) {
        become(arguments.data(), {input, output.ends[1], error}, diesWithParent);
    }
    mIsReaped = mPid < 0;
    close(input);
    close(output.ends[1]);
    if (mErr.descriptor >= 0) {
        close(error);
    }
}

ChildProcess ChildProcess::asRole(const std::string& role, const Words& arguments) {
    Words command = {ownPath(), kRoleArgument + role};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return ChildProcess(command);
}

ChildProcess ChildProcess::asRoleWithErrors(const std::string& role) {
    return ChildProcess({ownPath(), kRoleArgument + role}, Errors::WithOutput);
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept {
    *this = std::move(other);
}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this != &other) {
        end();
        mPid = std::exchange(other.mPid, -1);
        mIsReaped = std::exchange(other.mIsReaped, true);
        mStatus = other.mStatus;
        mInPieces = other.mInPieces;
        mInput = std::exchange(other.mInput, -1);
        mOut = std::exchange(other.mOut, Stream());
        mErr = std::exchange(other.mErr, Stream());
    }
    return *this;
}

ChildProcess::~ChildProcess() {
    end();
}

void ChildProcess::end() {
    killNow();
    closeInput();
    mOut.close();
    mErr.close();
}

bool ChildProcess::blocks(int signal) const {
    std::ifstream status("/proc/" + std::to_string(mPid) + "/status");
    const std::string field = "SigBlk:";
    unsigned long long blocked = 0;
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(field, 0) == 0) {
            blocked = std::stoull(line.substr(field.size()), nullptr, 16);
        }
    }
    return ((blocked >> static_cast<unsigned>(signal - 1)) & 1U) != 0;
}

void ChildProcess::Stream::close() {
    if (descriptor >= 0) {
        ::close(std::exchange(descriptor, -1));
    }
}

void ChildProcess::Stream::readOnce(bool inPieces) {
    char buffer[65536];
    const ssize_t size = read(descriptor, buffer, sizeof(buffer));
    if (size > 0) {
        text.append(buffer, static_cast<size_t>(size));
        if (inPieces) {
            pieces.emplace_back(buffer, static_cast<size_t>(size));
        }
    } else if (size == 0 || errno != EINTR) {
        close();
    }
}

/// One round of reading; false when there is nothing more to come.
bool ChildProcess::readSome(Clock::time_point deadline) {
    if (mOut.descriptor < 0 && mErr.descriptor < 0) {
        return false;
    }
    Stream* const streams[] = {&mOut, &mErr};
    pollfd sources[] = {{mOut.descriptor, POLLIN, 0}, {mErr.descriptor, POLLIN, 0}};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    const int ready = left > 0 ? poll(sources, 2, static_cast<int>(left)) : 0;
    if (ready == 0 || (ready < 0 && errno != EINTR)) {
        return false;
    }
    for (int n = 0; ready > 0 && n < 2; ++n) {
        if (sources[n].revents != 0) {
            streams[n]->readOnce(n == 1 && mInPieces);
        }
    }
    return mOut.descriptor >= 0 || mErr.descriptor >= 0;
}

bool ChildProcess::takeLine(std::string& line) {
    const size_t end = mOut.text.find('\n');
    if (end == std::string::npos) {
        return false;
    }
    line = mOut.text.substr(0, end);
    mOut.text.erase(0, end + 1);
    return true;
}

bool ChildProcess::nextLine(std::string& line) {
    const auto deadline = Clock::now() + kLimit;
    while (!takeLine(line)) {
        if (mOut.descriptor < 0 || !readSome(deadline)) {
            return takeLine(line);
        }
    }
    return true;
}

std::string ChildProcess::readLine() {
    std::string line;
    return nextLine(line) ? line : std::string();
}

ChildProcess::Lines ChildProcess::readUntil(
    const std::function<bool(const std::string& line)>& isLast) {
    Lines lines;
    for (std::string line; nextLine(line);) {
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

bool ChildProcess::awaitText(const Stream& stream, const std::string& text) {
    const auto deadline = Clock::now() + kLimit;
    while (stream.text.find(text) == std::string::npos && readSome(deadline)) {
    }
    return stream.text.find(text) != std::string::npos;
}

bool ChildProcess::awaitOutput(const std::string& text) {
    return awaitText(mOut, text);
}

bool ChildProcess::awaitError(const std::string& text) {
    return awaitText(mErr, text);
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

void ChildProcess::kill(int signal) const {
    if (!mIsReaped) {
        ::kill(mPid, signal);
    }
}

void ChildProcess::killNow() {
    kill(SIGKILL);
    while (!mIsReaped && !reap(0)) {
    }
}

/// @return false where it has not ended.
bool ChildProcess::reap(int options) {
    int status = 0;
    const pid_t ended = waitpid(mPid, &status, options);
    if (ended == mPid) {
        mStatus = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    mIsReaped = ended == mPid || (ended < 0 && errno != EINTR);
    return mIsReaped;
}

int ChildProcess::wait() {
    const auto deadline = Clock::now() + kLimit;
    while (!mIsReaped && !reap(WNOHANG)) {
        if (Clock::now() > deadline) {
            ADD_FAILURE() << "process " << mPid << " has not ended in time, and is killed";
            killNow();
        }
        (void)poll(nullptr, 0, 1);
    }
    return mStatus;
}

Outcome ChildProcess::finish() {
    const auto deadline = Clock::now() + kLimit;
    while (readSome(deadline)) {
    }
    if (Clock::now() >= deadline) {
        ADD_FAILURE() << "process " << mPid << " has not closed its output in time, and is killed";
        kill(SIGKILL);
    }
    return {wait(), mOut.text, mErr.text};
}

}  // namespace voxtrel_test
