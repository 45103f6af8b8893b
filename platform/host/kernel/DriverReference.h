// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_DRIVERREFERENCE_H
#define VOXTREL_KERNEL_DRIVERREFERENCE_H

#include <atomic>

#include "kernel/HandleReference.h"
#include "kernel/Threads.h"

namespace android::kernel {

/// A handle that this process holds, by one strong and one weak count, as long as the object lives.
///
/// Called on: any thread. Locks: its own; no callback runs with it held.
class DriverReference final : public HandleReference {
public:
    DriverReference(Process& process, Threads& threads, uint32_t handle)
        : HandleReference(handle), mProcess(process), mThreads(threads) {}
    ~DriverReference() override;

    status_t call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override;
    /// Known from calls alone: the driver has no query for it.
    bool hasEnded() const override { return mEnded; }
    status_t watch(const wp<BpBinder>& proxy) override;
    void unwatch() override;

    /// Drops the counts of a node that has died while the proxy lives on, so that the driver may
    /// use the handle for another node. Notifies the links that have not been notified, since the
    /// driver forgets the death request.
    void release();

private:
    bool answersPing();
    void write(const CommandBuffer& commands);
    void reportDeath(sp<BpBinder> proxy);

    Process& mProcess;
    Threads& mThreads;
    std::atomic<bool> mEnded{false};
    Mutex mLock;
    bool mReleased PLATFORM_GUARDED_BY(mLock) = false;
    // Of the death request; 0: there is none.
    binder_uintptr_t mCookie PLATFORM_GUARDED_BY(mLock) = 0;
};

}  // namespace android::kernel

#endif
