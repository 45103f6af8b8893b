// SPDX-License-Identifier: Apache-2.0
#include <sys/resource.h>

#include <algorithm>
#include <memory>

#include "binder/transport/Transport.h"
#include "socket/Fd.h"
#include "socket/Lease.h"
#include "socket/Listener.h"
#include "socket/Message.h"
#include "socket/Objects.h"
#include "socket/SocketPath.h"
#include "socket/ThreadPool.h"
#include "utils/Mutex.h"

namespace android::transport {

namespace {

// A reference costs a descriptor or two at either end; the usual first limit of 1024 is for
// programs that use select(), which the runtime does not.
void raiseDescriptorLimit() {
    constexpr rlim_t kEnough = 65536;
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < kEnough) {
        limit.rlim_cur = std::min(limit.rlim_max, kEnough);
        (void)setrlimit(RLIMIT_NOFILE, &limit);  // as it was, otherwise
    }
}

/// Calls travel over sockets between the processes themselves; see docs/transport.md.
class SocketTransport final : public Transport {
public:
    SocketTransport() {
        armForkGuard();
        raiseDescriptorLimit();
    }

    sp<IBinder> contextObject() override {
        if (refusedAfterFork()) {
            return nullptr;
        }
        if (const sp<IBinder> known = knownContext(); known != nullptr) {
            return known;
        }
        // Without the lock: a manager that takes its time costs each thread one wait, not
        // everybody's.
        Fd door = connectTo(socketPath());
        return adopt(std::move(door));
    }

    bool becomeContext(const sp<BBinder>& manager, const SocketAccess& access) override {
        if (refusedAfterFork()) {
            return false;
        }
        Mutex::Autolock held(mLock);
        return serve(Listener::open(socketPath(), manager, access), manager);
    }

    bool becomeContextAt(Fd socket, const sp<BBinder>& manager) override {
        if (refusedAfterFork()) {
            return false;
        }
        Mutex::Autolock held(mLock);
        return serve(Listener::openAt(std::move(socket), manager), manager);
    }

    bool leaveIfUnused() override {
        Mutex::Autolock held(mLock);
        return mListener != nullptr && mListener->leaveIfUnused();
    }

    std::optional<std::chrono::steady_clock::time_point> unusedSince() override {
        return unleasedSince();
    }

    void startThreads() override {
        if (!refusedAfterFork()) {
            threadPool().start();
        }
    }
    void setMostThreads(size_t count) override { threadPool().setMost(count); }
    void serveForever() override {
        if (!refusedAfterFork()) {
            threadPool().serveForever();
        }
    }

private:
    bool serve(std::shared_ptr<Listener> listener, const sp<BBinder>& manager)
        PLATFORM_REQUIRES(mLock) {
        if (listener == nullptr) {
            return false;
        }
        mListener = std::move(listener);
        mManager = manager;
        return true;
    }

    sp<IBinder> knownContext() {
        Mutex::Autolock held(mLock);
        return usableContext();
    }

    sp<IBinder> usableContext() PLATFORM_REQUIRES(mLock) {
        if (mManager != nullptr) {
            return mManager;
        }
        const bool usable = mContext != nullptr && mContext->isBinderAlive() && !hasEnded(mContext);
        return usable ? mContext : nullptr;
    }

    // All threads have the proxy of the one that was first.
    sp<IBinder> adopt(Fd door) {
        Mutex::Autolock held(mLock);
        const sp<IBinder> first = usableContext();
        if (first != nullptr) {
            return first;
        }
        trustSharer(door.valid() ? peerPid(door) : 0);
        mContext = door.valid() ? proxyOfManager(std::move(door)) : nullptr;
        return mContext;
    }

    Mutex mLock;
    sp<IBinder> mContext PLATFORM_GUARDED_BY(mLock);
    sp<BBinder> mManager PLATFORM_GUARDED_BY(mLock);
    std::shared_ptr<Listener> mListener PLATFORM_GUARDED_BY(mLock);
};

}  // namespace

Transport& transport() {
    static auto* const instance = new SocketTransport();
    return *instance;
}

}  // namespace android::transport
