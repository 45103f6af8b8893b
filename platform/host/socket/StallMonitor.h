// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_STALLMONITOR_H
#define VOXTREL_SOCKET_STALLMONITOR_H

#include <cstdint>
#include <memory>
#include <vector>

#include "socket/CallChannel.h"
#include "socket/Reactor.h"
#include "utils/Mutex.h"

namespace android::transport {

/// Looks every few milliseconds, while threads serve channels, whether one of them has been in the
/// same call since the last look, and then hands its channel over to the other threads. So a call
/// that takes long delays what comes behind it on its channel for that time only, and a quick call
/// pays nothing.
class StallMonitor final : public EventHandler, public std::enable_shared_from_this<StallMonitor> {
public:
    explicit StallMonitor(Reactor& reactor);

    /// The calling thread serves `channel` until it leaves. False when there is no descriptor for
    /// the timer; the next one tries again.
    bool enter(const std::shared_ptr<CallChannel>& channel) PLATFORM_EXCLUDES(mLock);
    void leave(const std::shared_ptr<CallChannel>& channel) PLATFORM_EXCLUDES(mLock);
    void onReady() override;
    bool neverBlocks() const override { return true; }

private:
    struct Watched {
        std::shared_ptr<CallChannel> channel;
        uint32_t seen;
    };
    void look() PLATFORM_REQUIRES(mLock);
    void setTimer(bool on) PLATFORM_REQUIRES(mLock);
    bool hasTimer() PLATFORM_REQUIRES(mLock);

    Reactor& mReactor;
    // Set once, before the reactor knows of it; a process that is out of descriptors has none yet.
    Fd mTimer;
    Mutex mLock;
    std::vector<Watched> mWatched PLATFORM_GUARDED_BY(mLock);
    int mIdleLooks PLATFORM_GUARDED_BY(mLock) = 0;
    bool mTicking PLATFORM_GUARDED_BY(mLock) = false;
};

}  // namespace android::transport

#endif
