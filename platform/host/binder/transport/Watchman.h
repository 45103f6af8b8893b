// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_WATCHMAN_H
#define VOXTREL_BINDER_TRANSPORT_WATCHMAN_H

#include <memory>
#include <vector>

#include "binder/transport/CallEnd.h"
#include "binder/transport/Reactor.h"
#include "utils/Mutex.h"

namespace android::transport {

/// Looks every few milliseconds, while threads serve sockets, whether one of them has been in the
/// same call since the last look, and then lends its socket to the others. So a call that takes
/// long holds up what comes behind it on its socket for that time only, and a quick call pays
/// nothing.
///
/// It also wakes threads that sleep on a socket for ever because its peer, who may have kept a copy
/// of the end that it gave away, has taken the limit of time off it: such a socket is shut down.
class Watchman final : public Source, public std::enable_shared_from_this<Watchman> {
public:
    Watchman();

    /// False when there is nothing to make it tick with; the next one tries again.
    bool enter(const std::shared_ptr<CallEnd>& end) PLATFORM_EXCLUDES(mLock);
    void leave(const CallEnd& end) PLATFORM_EXCLUDES(mLock);
    void onReady() override;
    bool isBrief() const override { return true; }

private:
    struct Watched {
        std::shared_ptr<CallEnd> end;
        uint32_t seen;
        int idleLooks;  ///< in a row, in which nothing has been received
    };
    void look() PLATFORM_REQUIRES(mLock);
    static void lookAt(Watched& one);
    void setTimer(bool on) PLATFORM_REQUIRES(mLock);
    bool hasTimer() PLATFORM_REQUIRES(mLock);

    // Set once, before the reactor knows of it; a process that is out of descriptors has none yet.
    Fd mTimer;
    Mutex mLock;
    std::vector<Watched> mWatched PLATFORM_GUARDED_BY(mLock);
    int mIdleLooks PLATFORM_GUARDED_BY(mLock) = 0;
    bool mTicking PLATFORM_GUARDED_BY(mLock) = false;
};

/// The process's watchman; never destroyed.
Watchman& watchman();

}  // namespace android::transport

#endif
