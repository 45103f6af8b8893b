// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_STALLMONITOR_H
#define VOXTREL_SOCKET_STALLMONITOR_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "socket/Reactor.h"
#include "utils/Mutex.h"

namespace android::transport {

/// Which call a channel is in, if any. While a thread is in a call of the channel it does not read
/// the socket.
class CallProgress {
public:
    /// The thread that the channel has been handed to is about to carry out a call; a number that
    /// `finish` wants back.
    uint32_t begin() {
        const uint32_t call = (mNumber.load(std::memory_order_relaxed) + 2) | 1U;
        mNumber.store(call, std::memory_order_relaxed);
        return call;
    }
    /// False: the call took long, and the channel is another thread's now.
    bool finish(uint32_t call) { return mNumber.compare_exchange_strong(call, call + 1); }

private:
    friend class StallMonitor;
    // Odd while a call is under way. Each call has a number of its own.
    std::atomic<uint32_t> mNumber{0};
};

/// Looks every 2 ms, while threads serve channels, whether one is in the same call as at the last
/// look, and then hands its channel over to the other threads. So a long call does not hold up what
/// comes behind it on its channel, and a quick one pays nothing.
class StallMonitor final : public EventHandler, public std::enable_shared_from_this<StallMonitor> {
public:
    explicit StallMonitor(Reactor& reactor);

    /// The calling thread serves `channel` until it leaves. False when there is no timer, or epoll
    /// refuses it; the next thread tries again.
    bool enter(const std::shared_ptr<EventHandler>& channel, CallProgress& progress)
        PLATFORM_EXCLUDES(mLock);
    void leave(const CallProgress& progress) PLATFORM_EXCLUDES(mLock);
    void onReady() override;
    bool neverBlocks() const override { return true; }

private:
    struct Watched {
        std::shared_ptr<EventHandler> channel;
        CallProgress* progress;
        uint32_t seen;
    };
    void look() PLATFORM_REQUIRES(mLock);
    void setTimer(bool on) PLATFORM_REQUIRES(mLock);
    bool hasTimer() PLATFORM_REQUIRES(mLock);

    Reactor& mReactor;
    // Set once, before the reactor knows of it, by the first thread that enters and can have one.
    Fd mTimer;
    Mutex mLock;
    std::vector<Watched> mWatched PLATFORM_GUARDED_BY(mLock);
    int mIdleLooks PLATFORM_GUARDED_BY(mLock) = 0;
    bool mTicking PLATFORM_GUARDED_BY(mLock) = false;
};

}  // namespace android::transport

#endif
