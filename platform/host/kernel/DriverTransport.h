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

/// The transport over the kernel's binder driver; see docs/transport.md.
class DriverTransport final : public transport::Transport {
public:
    /// `path` is the binder device. Where it cannot be used, the log says why and what to do, and
    /// the transport that is returned finds no service manager.
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
    /// The manager or its proxy, if alive. A proxy that has died is released and moved to `dead`.
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
