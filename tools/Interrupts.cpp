// SPDX-License-Identifier: Apache-2.0
#include "tools/Interrupts.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace voxtrelctl {
namespace {

constexpr int kGraceMs = 80;

bool isReady(int file, short what, int timeoutMs) {
    pollfd wanted = {file, what, 0};
    return poll(&wanted, 1, timeoutMs) == 1;
}

/// Without one of them the thread could not be ended, and no signal would end the process.
int opened(int file) {
    if (file >= 0) {
        return file;
    }
    const int error = errno;
    if (error == EMFILE || error == ENFILE) {
        throw std::runtime_error(
            "out of file descriptors: raise the limit (ulimit -n), or close some");
    }
    throw std::system_error(error, std::generic_category(), "it cannot wait for signals");
}

[[noreturn]] void endNow(bool isQuiet) {
    if (isQuiet) {
        std::_Exit(EXIT_SUCCESS);
    }
    constexpr std::string_view kLine = "\r\x1b[Kvoxtrelctl: interrupted\n";
    constexpr std::size_t kErasure = 4;  // of progress, on a terminal
    const std::string_view line = kLine.substr(isatty(STDERR_FILENO) == 1 ? 0 : kErasure);
    if (isReady(STDERR_FILENO, POLLOUT, 0)) {  // whoever reads it may be stopped
        (void)!write(STDERR_FILENO, line.data(), line.size());
    }
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

Interrupts::Interrupts()
    : mEnd(opened(eventfd(0, EFD_CLOEXEC))), mCome(opened(eventfd(0, EFD_CLOEXEC))) {
    sigset_t wanted;
    sigemptyset(&wanted);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&wanted, signal);
    }
    pthread_sigmask(SIG_BLOCK, &wanted, &mBefore);
    mSignals = opened(signalfd(-1, &wanted, SFD_CLOEXEC));
    mThread = std::thread([this] { watch(); });
}

Interrupts::~Interrupts() {
    (void)eventfd_write(mEnd, 1);
    mThread.join();
    for (const int file : {mSignals, mEnd, mCome}) {
        close(file);
    }
    pthread_sigmask(SIG_SETMASK, &mBefore, nullptr);
}

void Interrupts::onSignal(Handler handler) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mHandler = std::move(handler);
}

void Interrupts::onEnd(std::function<void()> lastWords) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mLastWords = std::move(lastWords);
}

bool Interrupts::isDealtWith() {
    signalfd_siginfo came = {};
    (void)!read(mSignals, &came, sizeof came);
    const std::lock_guard<std::mutex> lock(mMutex);
    mHasCome = true;  // before the handler has its effects
    mHasCome = !(mHandler && mHandler(static_cast<int>(came.ssi_signo)));
    return !mHasCome;
}

void Interrupts::watch() {
    pollfd wanted[] = {{mSignals, POLLIN, 0}, {mEnd, POLLIN, 0}};
    do {
        while (poll(wanted, 2, -1) < 0) {
        }
        if (wanted[0].revents == 0) {
            return;
        }
    } while (isDealtWith());
    (void)eventfd_write(mCome, 1);
    if (!isReady(mEnd, POLLIN, kGraceMs)) {
        const std::lock_guard<std::mutex> lock(mMutex);
        try {
            if (mLastWords) {
                mLastWords();
            }
        } catch (const std::exception&) {  // nobody reads them
        }
        endNow(mIsQuiet);
    }
}

}  // namespace voxtrelctl
