// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/Worker.h"

#include <csignal>

namespace voxtrel {
namespace {

/// A thread that is begun meanwhile gets no signals but those of its own mistakes.
class SignalGuard {
public:
    SignalGuard() {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
            sigdelset(&blocked, own);
        }
        (void)pthread_sigmask(SIG_BLOCK, &blocked, &mBefore);  // fails for no valid set
    }
    ~SignalGuard() { (void)pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

private:
    sigset_t mBefore = {};
};

}  // namespace

Worker::~Worker() {
    if (mHandle.joinable()) {
        mHandle.detach();
    }
}

void Worker::startWithoutSignals(const std::function<void()>& loop) {
    const SignalGuard guard;
    start(loop);
}

void Worker::start(const std::function<void()>& loop) {
    if (mIsRunning) {
        return;
    }
    if (mHandle.joinable()) {
        mHandle.detach();  // past its loop, after an end that somebody still waits for
    }
    mHandle = std::thread(loop);
    mId = mHandle.get_id();
    mIsRunning = true;
}

void Worker::finish() {
    mIsRunning = false;
    mId = {};
}

std::thread Worker::release() {
    if (mIsRunning && mHandle.joinable()) {
        mHandle.detach();
    }
    return std::move(mHandle);
}

}  // namespace voxtrel
