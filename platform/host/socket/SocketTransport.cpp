// SPDX-License-Identifier: Apache-2.0
#include "socket/SocketTransport.h"

#include <sys/resource.h>

#include <algorithm>

#include "binder/Binder.h"
#include "binder/BpBinder.h"
#include "binder/ServiceManagerSocket.h"
#include "socket/Listener.h"
#include "support/ForkGuard.h"

namespace android::transport {

namespace {

// A reference costs a descriptor or two at either end. The usual soft limit of 1024 is for programs
// that use select(), which the runtime does not.
void raiseDescriptorLimit() {
    constexpr rlim_t kEnough = 65536;
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < kEnough) {
        limit.rlim_cur = std::min(limit.rlim_max, kEnough);
        (void)setrlimit(RLIMIT_NOFILE, &limit);  // as it was, otherwise
    }
}

}  // namespace

SocketTransport::SocketTransport() {
    raiseDescriptorLimit();
}

SocketTransport::~SocketTransport() = default;

sp<IBinder> SocketTransport::contextObject() {
    if (refusedAfterFork()) {
        return nullptr;
    }
    {
        Mutex::Autolock held(mLock);
        if (const sp<IBinder> known = knownContext(); known != nullptr) {
            return known;
        }
    }
    // Without the lock: a slow manager costs each thread its own wait only.
    Fd control = connectTo(serviceManagerSocket());
    Mutex::Autolock held(mLock);
    if (const sp<IBinder> first = knownContext(); first != nullptr) {
        return first;  // another thread's: they all have one proxy
    }
    mRuntime.context().quotas.trustManager(peerOf(control).pid);
    mManagerProxy = control.valid() ? mRuntime.proxyOfManager(std::move(control)) : nullptr;
    return mManagerProxy;
}

bool SocketTransport::becomeContext(const sp<BBinder>& manager) {
    return becomeContext(manager, {});
}

bool SocketTransport::becomeContext(const sp<BBinder>& manager, const SocketAccess& access) {
    if (refusedAfterFork()) {
        return false;
    }
    Mutex::Autolock held(mLock);
    return serve(Listener::open(mRuntime.context(), serviceManagerSocket(), manager, access),
                 manager);
}

bool SocketTransport::becomeContextAt(Fd socket, const sp<BBinder>& manager) {
    if (refusedAfterFork()) {
        return false;
    }
    Mutex::Autolock held(mLock);
    return serve(Listener::openAt(mRuntime.context(), std::move(socket), manager), manager);
}

std::string SocketTransport::contextPlace() const {
    return serviceManagerSocket();
}

bool SocketTransport::leaveIfUnused() {
    Mutex::Autolock held(mLock);
    return mListener != nullptr && mListener->leaveIfUnused();
}

std::optional<std::chrono::steady_clock::time_point> SocketTransport::unusedSince() {
    return mRuntime.context().quotas.unusedSince();
}

void SocketTransport::startThreads() {
    if (!refusedAfterFork()) {
        mRuntime.context().pool.start();
    }
}

void SocketTransport::setMaxThreads(size_t count) {
    mRuntime.context().pool.setMax(count);
}

void SocketTransport::serveForever() {
    if (!refusedAfterFork()) {
        mRuntime.context().pool.serveForever();
    }
}

// Letting go of a reference closes its sockets at once: nothing is ever held back.
void SocketTransport::flush() {}

bool SocketTransport::serve(std::shared_ptr<Listener> listener, const sp<BBinder>& manager) {
    if (listener == nullptr) {
        return false;
    }
    mListener = std::move(listener);
    mManager = manager;
    return true;
}

sp<IBinder> SocketTransport::knownContext() {
    if (mManager != nullptr) {
        return mManager;
    }
    const bool usable = mManagerProxy != nullptr && !mManagerProxy->remoteBinder()->nodeHasEnded();
    return usable ? mManagerProxy : nullptr;
}

}  // namespace android::transport
