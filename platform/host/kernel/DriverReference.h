// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_DRIVERREFERENCE_H
#define VOXTREL_KERNEL_DRIVERREFERENCE_H

#include <atomic>

#include "kernel/HandleReference.h"
#include "kernel/Threads.h"

namespace android::kernel {

/// A node of another process by the driver's handle, which this process holds as long as this
/// object lives.
///
/// Called on: any thread. Locks: its own, with which it calls nobody back.
class DriverReference final : public HandleReference {
public:
    DriverReference(Process& process, Threads& threads, uint32_t handle)
        : HandleReference(handle), mProcess(process), mThreads(threads) {}
    ~DriverReference() override;

    status_t call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override;
    /// What the driver has told so far: it cannot be asked.
    bool hasEnded() const override { return mEnded; }
    status_t watch(const wp<BpBinder>& proxy) override;
    void unwatch() override;

    /// Lets go of the handle of a node that has died, so that the driver may give it to another,
    /// and has the death told, which the driver no longer does.
    void letGo();

private:
    bool answersPing();
    void tellDeath(sp<BpBinder> proxy);

    Process& mProcess;
    Threads& mThreads;
    std::atomic<bool> mEnded{false};
    Mutex mLock;
    bool mLetGo PLATFORM_GUARDED_BY(mLock) = false;
    // Of the death request; 0: there is none.
    binder_uintptr_t mCookie PLATFORM_GUARDED_BY(mLock) = 0;
};

}  // namespace android::kernel

#endif
