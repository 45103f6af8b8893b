// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverReference.h"

#include "support/ForkGuard.h"

namespace android::kernel {

DriverReference::~DriverReference() {
    letGo();
}

status_t DriverReference::call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (transport::refusedAfterFork()) {
        return INVALID_OPERATION;
    }
    const DriverThread::Result result =
        mThreads.current().transact(handle(), code, data, reply, flags);
    if (result.isDead && (!result.wasSent || !answersPing())) {
        mEnded = true;
    }
    return result.status;
}

// A reply is also lost when the thread that would have sent it has ended, and the node lives on. A
// one-way call waits for nobody.
bool DriverReference::answersPing() {
    const Parcel none;
    return !mThreads.current()
                .transact(handle(), IBinder::PING_TRANSACTION, none, nullptr, TF_ONE_WAY)
                .isDead;
}

status_t DriverReference::watch(const wp<BpBinder>& proxy) {
    if (mLetGo) {
        return DEAD_OBJECT;
    }
    if (mCookie == 0) {
        mCookie = mProcess.deaths.add(proxy);
        mThreads.current().requestDeath(handle(), mCookie);
    }
    return OK;
}

void DriverReference::unwatch() {
    const binder_uintptr_t cookie = mCookie.exchange(0);
    if (cookie != 0) {
        mProcess.deaths.remove(cookie);
        mThreads.current().clearDeath(handle(), cookie);
    }
}

// The handle's counts go last: the driver clears a death only for a holder.
void DriverReference::letGo() {
    // A forked child has no share in its parent's counts, and a lock may be held there for ever.
    if (mLetGo.exchange(true) || transport::isForkedChild()) {
        return;
    }
    mProcess.handles.forget(handle(), *this);
    unwatch();
    mThreads.current().release(handle());
}

}  // namespace android::kernel
