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
/// Called on: any thread; `watch` and `unwatch` one at a time. Locks: none.
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

    /// Lets go of the handle of a node that has died, so that the driver may give it to another.
    void letGo();

private:
    bool answersPing();

    Process& mProcess;
    Threads& mThreads;
    std::atomic<bool> mEnded{false};
    std::atomic<bool> mLetGo{false};
    std::atomic<binder_uintptr_t> mCookie{0};  // of the death request; 0: there is none
};

}  // namespace android::kernel

#endif
