// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_STALLMONITOR_H
#define VOXTREL_SOCKET_STALLMONITOR_H

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <vector>

#include "socket/CallChannel.h"
#include "socket/Reactor.h"
#include "utils/Mutex.h"

namespace android::transport {

/// Looks every few milliseconds, while threads serve sockets, whether one of them has been in the
/// same call since the last look, and then lends its socket to the others. So a call that takes
/// long holds up what comes behind it on its socket for that time only, and a quick call pays
/// nothing.
///
/// It also wakes threads that sleep on a socket for ever because its peer, who may have kept a copy
/// of the end that it gave away, has taken the limit of time off it: such a socket is shut down.
/// Proof is that the limit is gone; or, where it has been put back, that the thread is still
/// asleep, and not merely late, when that limit has passed a thousand times over.
class StallMonitor final : public EventHandler, public std::enable_shared_from_this<StallMonitor> {
public:
    StallMonitor();

    /// The calling thread serves `end` until it leaves. `sleeps` is counted up when it goes to
    /// sleep on the socket and when it wakes, so that it is odd in between. False when there is
    /// nothing to make the stall monitor tick with; the next one tries again.
    bool enter(const std::shared_ptr<CallChannel>& end, const std::atomic<uint32_t>& sleeps)
        PLATFORM_EXCLUDES(mLock);
    void leave(const std::atomic<uint32_t>& sleeps) PLATFORM_EXCLUDES(mLock);
    void onReady() override;
    bool neverBlocks() const override { return true; }

private:
    struct Watched {
        std::shared_ptr<CallChannel> end;
        uint32_t seen;
        const std::atomic<uint32_t>* sleeps;
        uint32_t seenSleep;
        int asleepLooks;  ///< in a row, in the same sleep
        pid_t thread;
    };
    void look() PLATFORM_REQUIRES(mLock);
    static void lookAt(Watched& one);
    static void lookAtSleep(Watched& one);
    void setTimer(bool on) PLATFORM_REQUIRES(mLock);
    bool hasTimer() PLATFORM_REQUIRES(mLock);

    // Set once, before the reactor knows of it; a process that is out of descriptors has none yet.
    Fd mTimer;
    Mutex mLock;
    std::vector<Watched> mWatched PLATFORM_GUARDED_BY(mLock);
    int mIdleLooks PLATFORM_GUARDED_BY(mLock) = 0;
    bool mTicking PLATFORM_GUARDED_BY(mLock) = false;
};

/// The process's stall monitor; never destroyed.
StallMonitor& stallMonitor();

}  // namespace android::transport

#endif
