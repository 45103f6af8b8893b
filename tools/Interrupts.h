// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_INTERRUPTS_H
#define VOXTREL_TOOLS_INTERRUPTS_H

#include <atomic>
#include <csignal>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace voxtrelctl {

/// The user ended a command; what it had asked for is taken back already.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

/// Ends the process within 100 ms of SIGINT, SIGTERM or SIGHUP, whatever it waits for.
///
/// The first one calls the handler, and leaves the main thread a moment to come to an end by
/// itself. Make it before any other thread starts. One at a time in a process; with its end signals
/// do again what they did before.
class Interrupts {
public:
    /// @return true: the signal is dealt with, and the process goes on.
    using Handler = std::function<bool(int signal)>;

    /// Throws where there are no descriptors, no memory or no thread for it.
    Interrupts();
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    /// Calls `handler` on a thread of this object's when a signal comes; it must not wait. An
    /// earlier one is not being called any more when this returns.
    void onSignal(Handler handler);

    /// Calls `lastWords` on that thread when the main one is late and the process is ended in its
    /// place. It must not wait.
    void onEnd(std::function<void()> lastWords);

    /// From now on a signal is no failure: the process ends with status 0 and without a line.
    void endQuietly() { mIsQuiet = true; }

    /// A signal has come: the main thread should come to an end.
    bool hasCome() const { return mHasCome; }

    /// Readable from then on.
    int fd() const { return mCome; }

private:
    void watch();
    bool isDealtWith();

    sigset_t mBefore = {};  ///< blocked before
    int mSignals;           ///< signalfd
    int mEnd;               ///< eventfd: this object ends
    int mCome;              ///< eventfd: a signal has come
    std::mutex mMutex;      ///< of the two, while they are called too
    Handler mHandler;
    std::function<void()> mLastWords;
    std::atomic<bool> mHasCome{false};
    std::atomic<bool> mIsQuiet{false};
    std::thread mThread;
};

}  // namespace voxtrelctl

#endif
