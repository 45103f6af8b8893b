// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_DRIVERTRANSPORT_H
#define VOXTREL_KERNEL_DRIVERTRANSPORT_H

#include <atomic>
#include <string>

#include "binder/Binder.h"
#include "binder/transport/Transport.h"
#include "kernel/Process.h"
#include "kernel/Threads.h"
#include "utils/Mutex.h"

namespace android::kernel {

/// Calls travel through the kernel's driver; see docs/transport.md.
class DriverTransport final : public transport::Transport {
public:
    /// `path` is the driver's device. Where it cannot be used the log says why and what to do; then
    /// there is no service manager, and nobody can be called.
    static transport::Transport* open(SystemCalls& system, const std::string& path);

    DriverTransport(SystemCalls& system, std::unique_ptr<Device> device, std::string path);

    sp<IBinder> contextObject() override;
    bool becomeContext(const sp<BBinder>& manager) override;
    std::string contextPlace() const override { return mPath; }
    void startThreads() override;
    void setMaxThreads(size_t count) override;
    void serveForever() override;
    void flush() override;

private:
    /// What `contextObject` has given before, unless it has ended; then `dead` receives it.
    sp<IBinder> knownContext(sp<BpBinder>* dead) PLATFORM_REQUIRES(mLock);
    bool contextAnswers();
    sp<IBinder> holdContext() PLATFORM_REQUIRES(mLock);

    const std::string mPath;
    Process mProcess;
    Threads mThreads;
    std::atomic<bool> mStarted{false};
    const sp<IBinder::DeathRecipient> mContextDeath;
    Mutex mLock;
    sp<BpBinder> mContext PLATFORM_GUARDED_BY(mLock);
    sp<BBinder> mManager PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::kernel

#endif
