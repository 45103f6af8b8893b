// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverReference.h"

#include <utility>

#include "support/ForkGuard.h"

namespace android::kernel {

DriverReference::~DriverReference() {
    release();
}

status_t DriverReference::call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (transport::refusedAfterFork()) {
        return INVALID_OPERATION;
    }
    if (mEnded) {
        return DEAD_OBJECT;  // the handle may be another node's
    }
    const DriverThread::Result result =
        mThreads.current().transact(handle(), code, data, reply, flags);
    if (result.isDead && (!result.wasSent || !answersPing())) {
        mEnded = true;
    }
    return result.status;
}

// BR_DEAD_REPLY also comes when only the thread that served the call has ended. A one-way call does
// not wait for the node.
bool DriverReference::answersPing() {
    const Parcel none;
    return !mThreads.current()
                .transact(handle(), IBinder::PING_TRANSACTION, none, nullptr, TF_ONE_WAY)
                .isDead;
}

status_t DriverReference::watch(const wp<BpBinder>& proxy) {
    Mutex::Autolock held(mLock);
    if (mReleased) {
        reportDeath(proxy.promote());
    } else if (mCookie == 0) {
        mCookie = mProcess.deaths.add(proxy);
        CommandBuffer commands;
        commands.addDeath(BC_REQUEST_DEATH_NOTIFICATION, handle(), mCookie);
        write(commands);
    }
    return OK;
}

void DriverReference::unwatch() {
    Mutex::Autolock held(mLock);
    if (mCookie != 0) {
        mProcess.deaths.remove(mCookie);
        CommandBuffer commands;
        commands.addDeath(BC_CLEAR_DEATH_NOTIFICATION, handle(), mCookie);
        write(commands);
        mCookie = 0;
    }
}

// `forget` clears the death request, which the driver does only for a holder: the counts go last.
void DriverReference::release() {
    // A forked child has no share in its parent's counts, and a lock may be held there for ever.
    if (transport::isForkedChild()) {
        return;
    }
    sp<BpBinder> untold;
    {
        Mutex::Autolock held(mLock);
        if (mReleased) {
            return;
        }
        mReleased = true;
        mEnded = true;
        untold = mProcess.deaths.take(mCookie);
    }
    mProcess.handles.forget(handle(), *this);
    CommandBuffer commands;
    commands.addHandle(BC_RELEASE, handle());
    commands.addHandle(BC_DECREFS, handle());
    write(commands);
    if (untold != nullptr) {
        reportDeath(std::move(untold));
    }
}

void DriverReference::write(const CommandBuffer& commands) {
    (void)mThreads.current();  // has the driver forget this thread when it ends
    mProcess.device->write(commands);
}

// On a thread of its own: the calling thread may hold locks that the recipients take.
void DriverReference::reportDeath(sp<BpBinder> proxy) {
    mProcess.threads.start([proxy = std::move(proxy)] { proxy->reportDeath(); });
}

}  // namespace android::kernel
