// SPDX-License-Identifier: Apache-2.0
#include "support/Log.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <new>
#include <utility>

namespace android::transport {

namespace {

// Constant-initialised: a child may be forked, and log, while its parent logs its first line.
LineLog gLog;

/// Blocks and discards the SIGPIPE that this thread's next write may raise.
class PipeSignalGuard {
public:
    PipeSignalGuard() {
        sigemptyset(&mPipe);
        sigaddset(&mPipe, SIGPIPE);
        sigset_t pending;
        sigemptyset(&pending);
        (void)sigpending(&pending);
        mWasPending = sigismember(&pending, SIGPIPE) == 1;
        (void)pthread_sigmask(SIG_BLOCK, &mPipe, &mBefore);
    }
    ~PipeSignalGuard() { (void)pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
    PipeSignalGuard(const PipeSignalGuard&) = delete;
    PipeSignalGuard& operator=(const PipeSignalGuard&) = delete;

    /// After a write that failed with EPIPE. One that was pending before is not this write's.
    void consume() const {
        const timespec none = {};
        while (!mWasPending && sigtimedwait(&mPipe, nullptr, &none) < 0 && errno == EINTR) {
        }
    }

private:
    sigset_t mPipe;
    sigset_t mBefore;
    bool mWasPending = false;
};

bool waitForRoom(std::chrono::milliseconds timeout) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + timeout;
    pollfd error = {STDERR_FILENO, POLLOUT, 0};
    int ready = poll(&error, 1, static_cast<int>(timeout.count()));
    while (ready < 0 && errno == EINTR) {
        // The time limit is not to begin anew with each signal.
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        ready =
            poll(&error, 1, static_cast<int>(std::max(left, std::chrono::milliseconds(0)).count()));
    }
    return ready != 0;  // the write, which does not wait either, finds out what is wrong
}

// Another thread or process may have filled the room since it was looked for; files never do.
ssize_t writeWithoutWaiting(char* text, size_t size) {
    struct stat status = {};
    if (fstat(STDERR_FILENO, &status) == 0 && !S_ISREG(status.st_mode)) {
        const iovec part = {text, size};
        const ssize_t done = pwritev2(STDERR_FILENO, &part, 1, -1, RWF_NOWAIT);
        if (done >= 0 || errno == EAGAIN || errno == EPIPE) {
            return done;
        }
    }
    return ::write(STDERR_FILENO, text, size);  // for files that have no non-blocking writes
}

bool writePiece(std::string& text, std::chrono::milliseconds deadline) {
    const PipeSignalGuard guard;
    for (size_t begin = 0; begin < text.size();) {
        if (!waitForRoom(deadline)) {
            return false;
        }
        // A pipe that is writable has room for this much, and takes it in one piece.
        const size_t size = std::min(text.size() - begin, static_cast<size_t>(PIPE_BUF));
        const ssize_t done = writeWithoutWaiting(&text[begin], size);
        if (done < 0 && errno == EPIPE) {
            guard.consume();
        }
        if (done <= 0) {
            return false;
        }
        begin += static_cast<size_t>(done);
    }
    return true;
}

std::string formatted(const char* format, va_list arguments) {
    char text[512];
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start is in the caller
    (void)std::vsnprintf(text, sizeof(text), format, arguments);  // a longer line is cut
    return text;
}

std::string runtimeName() {
    return "binder[" + std::to_string(getpid()) + "]";
}

}  // namespace

int LogRateLimit::take(Time now) {
    if (mUsed >= mMax && now - mBegin >= kPeriod) {
        mBegin = now;
        mUsed = 0;
    }
    if (mUsed >= mMax) {
        ++mRefused;
        return -1;
    }
    ++mUsed;
    return std::exchange(mRefused, 0);
}

void LineLog::write(const std::string& name, const std::string& text, LogLevel level) {
    put(name, name + ": " + text + "\n", level, 0);
}

void LineLog::writeAsItIs(const std::string& name, const std::string& text, LogLevel level) {
    put(name, text, level, 0);
}

void LineLog::writeLimited(const std::string& name, const std::string& text, LogLevel level) {
    const int refused = take();
    if (refused >= 0) {
        put(name, name + ": " + text + "\n", level, refused);
    }
}

int LineLog::take() {
    Mutex::Autolock held(mLock);
    return mRateLimit.take(std::chrono::steady_clock::now());
}

void LineLog::put(const std::string& name, const std::string& line, LogLevel level, int refused) {
    const int lost = mLost.exchange(0);
    const int missing = refused + lost;
    std::string piece;
    if (missing > 0) {
        piece = journalPrefix(LogLevel::Warning) + name + ": " + std::to_string(missing) +
                " lines were left out\n";
    }
    piece += journalPrefix(level) + line;
    // A reader that has stopped costs one wait, not one for each line.
    if (!writePiece(piece, lost > 0 ? std::chrono::milliseconds(0) : kTimeout)) {
        mLost += missing + 1;
    }
}

void logLine(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    try {
        gLog.write(runtimeName(), formatted(format, arguments));
    } catch (const std::bad_alloc&) {
        // Without memory the line is lost, and nothing else is.
    }
    va_end(arguments);
}

void logLimited(const char* format, ...) {
    if (logThreshold() < static_cast<int>(LogLevel::Warning)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    try {
        gLog.writeLimited(runtimeName(), formatted(format, arguments));
    } catch (const std::bad_alloc&) {
        // As above.
    }
    va_end(arguments);
}

}  // namespace android::transport
