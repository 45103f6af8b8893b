// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrelctl/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace voxtrel_test {
namespace {

using Clock = std::chrono::steady_clock;

/// For a machine under load, with sanitizers.
constexpr auto kLimit = std::chrono::seconds(90);

struct Pipe {
    int ends[2];
    explicit Pipe(int flags) {
        if (pipe2(ends, O_CLOEXEC | flags) != 0) {
            throw std::runtime_error("pipe");
        }
    }
};

/// A file that is gone already holds any amount of input, which a pipe does
/// not.
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

/// Allocates nothing: a thread of the parent's may have held the allocator when it forked.
[[noreturn]] void become(char* const* arguments, int in, int out, int err) {
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    execvp(arguments[0], arguments);
    _exit(127);
}

}  // namespace

Process::Process(const Words& words, const std::string& input, Errors errors) {
    const int in = inputWith(input);
    const Pipe out(0);
    const Pipe err(errors == Errors::Apart ? O_DIRECT : 0);
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    mPid = fork();
    if (mPid < 0) {
        throw std::runtime_error("fork");
    }
    if (mPid == 0) {
        become(arguments.data(), in, out.ends[1], err.ends[1]);
    }
    close(in);
    close(out.ends[1]);
    close(err.ends[1]);
    mStreams[0].descriptor = out.ends[0];
    mStreams[1].descriptor = err.ends[0];
}

Process::~Process() {
    if (!mReaped) {
        signal(SIGKILL);
        reap(0);
    }
    for (const Stream& stream : mStreams) {
        if (stream.descriptor >= 0) {
            close(stream.descriptor);
        }
    }
}

void Process::signal(int number) const {
    if (!mReaped) {
        kill(mPid, number);
    }
}

bool Process::blocks(int signal) const {
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

/// One round of reading; false when there is nothing more to come.
bool Process::readSome(Clock::time_point deadline) {
    pollfd sources[2] = {{mStreams[0].descriptor, POLLIN, 0}, {mStreams[1].descriptor, POLLIN, 0}};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0 || poll(sources, 2, static_cast<int>(left)) <= 0) {
        return false;
    }
    for (int n = 0; n < 2; ++n) {
        if (sources[n].revents == 0) {
            continue;
        }
        char buffer[4096];
        const ssize_t size = read(mStreams[n].descriptor, buffer, sizeof(buffer));
        if (size > 0) {
            mStreams[n].pieces.emplace_back(buffer, static_cast<size_t>(size));
            mStreams[n].text += mStreams[n].pieces.back();
        } else {
            close(mStreams[n].descriptor);
            mStreams[n].descriptor = -1;
        }
    }
    return mStreams[0].descriptor >= 0 || mStreams[1].descriptor >= 0;
}

bool Process::awaitText(const Stream& stream, const std::string& text) {
    const auto deadline = Clock::now() + kLimit;
    while (stream.text.find(text) == std::string::npos && readSome(deadline)) {
    }
    return stream.text.find(text) != std::string::npos;
}

bool Process::awaitOutput(const std::string& text) {
    return awaitText(mStreams[0], text);
}
bool Process::awaitError(const std::string& text) {
    return awaitText(mStreams[1], text);
}

void Process::reap(int options) {
    int status = 0;
    if (!mReaped && waitpid(mPid, &status, options) == mPid) {
        mReaped = true;
        mStatus = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
}

Outcome Process::wait() {
    const auto deadline = Clock::now() + kLimit;
    while (readSome(deadline)) {
    }
    if (Clock::now() >= deadline) {
        signal(SIGKILL);
    }
    reap(0);
    return {mStatus, mStreams[0].text, mStreams[1].text};
}

}  // namespace voxtrel_test
