// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_DEATHTABLE_H
#define VOXTREL_KERNEL_DEATHTABLE_H

#include <unordered_map>

#include "binder/BpBinder.h"
#include "kernel/Protocol.h"
#include "utils/Mutex.h"

namespace android::kernel {

/// The death requests of this process by cookie. Each request has a cookie of its own, so that a
/// BR_DEAD_BINDER that crosses with the clearing of its request is not taken for a later one's.
///
/// Called on: any thread. Locks: its own.
class DeathTable {
public:
    binder_uintptr_t add(const wp<BpBinder>& proxy) {
        Mutex::Autolock held(mLock);
        mProxies[++mLast] = proxy;
        return mLast;
    }

    /// The proxy to notify, once; null when it has gone or the request was cleared.
    sp<BpBinder> take(binder_uintptr_t cookie) {
        Mutex::Autolock held(mLock);
        const auto found = mProxies.find(cookie);
        if (found == mProxies.end()) {
            return nullptr;
        }
        sp<BpBinder> proxy = found->second.promote();
        mProxies.erase(found);
        return proxy;
    }

    void remove(binder_uintptr_t cookie) {
        Mutex::Autolock held(mLock);
        mProxies.erase(cookie);
    }

private:
    Mutex mLock;
    binder_uintptr_t mLast PLATFORM_GUARDED_BY(mLock) = 0;
    std::unordered_map<binder_uintptr_t, wp<BpBinder>> mProxies PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::kernel

#endif
