// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverTransport.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "kernel/DriverReference.h"
#include "support/ForkGuard.h"
#include "support/Log.h"

namespace android::kernel {

namespace {

constexpr uint32_t kContextHandle = 0;
// How many loopers the driver may request, beside the first, unless set.
constexpr uint32_t kThreads = 15;

// Stands in for a driver that cannot be used.
class NoTransport final : public transport::Transport {
public:
    explicit NoTransport(std::string path) : mPath(std::move(path)) {}

    sp<IBinder> contextObject() override { return nullptr; }
    bool becomeContext(const sp<BBinder>& /*manager*/) override { return false; }
    std::string contextPlace() const override { return mPath; }
    void startThreads() override {}
    void setMaxThreads(size_t /*count*/) override {}
    void serveForever() override {
        for (;;) {
            pause();
        }
    }
    void flush() override {}

private:
    const std::string mPath;
};

// A link that makes the proxy request the death notice, which it notes itself.
class ContextDeath final : public IBinder::DeathRecipient {
public:
    void binderDied(const wp<IBinder>& /*who*/) override {}
};

std::string whyNotContext(const std::string& path, int error) {
    switch (error) {
        case EBUSY:
            return "there is a service manager at " + path + " already";
        case EPERM:
            return "the service manager's place at " + path +
                   " belongs to the user whose process had it first";
        default:
            return "cannot become the service manager at " + path + ": " + strerrordesc_np(error);
    }
}

}  // namespace

transport::Transport* DriverTransport::open(SystemCalls& system, const std::string& path) {
    std::string error;
    std::unique_ptr<Device> device = Device::open(system, path, error);
    if (device == nullptr) {
        transport::logLine("%s", error.c_str());
        return new NoTransport(path);
    }
    (void)device->setMaxThreads(kThreads);  // cannot fail on an open device
    return new DriverTransport(system, std::move(device), path);
}

DriverTransport::DriverTransport(SystemCalls& system, std::unique_ptr<Device> device,
                                 std::string path)
    : mPath(std::move(path)),
      mProcess{std::move(device),
               HandleTable([this](uint32_t handle) {
                   return std::make_unique<DriverReference>(mProcess, mThreads, handle);
               }),
               {},
               ThreadStarter(system),
               [this] { mThreads.startRequestedLooper(); }},
      mThreads(mProcess),
      mContextDeath(new ContextDeath()) {}

sp<IBinder> DriverTransport::knownContext(sp<BpBinder>* dead) {
    if (mManager != nullptr) {
        return mManager;
    }
    if (mContext != nullptr && mContext->nodeHasEnded()) {
        // Handle 0 stays the dead manager's for its holders, and a death request of the next proxy
        // would report that death again.
        static_cast<DriverReference&>(mContext->reference()).release();
        *dead = std::exchange(mContext, nullptr);
    }
    return mContext;
}

// An early manager does not know the ping, and answers it with an error.
bool DriverTransport::contextAnswers() {
    const Parcel none;
    Parcel reply;
    const auto ping =
        mThreads.current().transact(kContextHandle, IBinder::PING_TRANSACTION, none, &reply, 0);
    return ping.status != DEAD_OBJECT && ping.status != FAILED_TRANSACTION;
}

sp<IBinder> DriverTransport::contextObject() {
    if (transport::refusedAfterFork()) {
        return nullptr;
    }
    mProcess.threads.retry();  // a death notice may wait for a thread
    sp<BpBinder> dead;         // destroyed without the lock
    {
        Mutex::Autolock held(mLock);
        const sp<IBinder> known = knownContext(&dead);
        if (known != nullptr) {
            return known;
        }
    }
    if (!contextAnswers()) {
        return nullptr;
    }
    // Locked until the counts are acquired: another thread must not release the handle meanwhile.
    Mutex::Autolock held(mLock);
    const sp<IBinder> first = knownContext(&dead);
    return first != nullptr ? first : holdContext();
}

// The driver routes a call through handle 0 to the current manager. Only a death notice tells that
// it is not the one the proxy was made for.
sp<IBinder> DriverTransport::holdContext() {
    mContext = mThreads.current().proxyOf(kContextHandle);
    mThreads.current().flush();
    (void)mContext->linkToDeath(mContextDeath);  // fails only where the death has been reported
    return mContext;
}

bool DriverTransport::becomeContext(const sp<BBinder>& manager) {
    if (transport::refusedAfterFork()) {
        return false;
    }
    Mutex::Autolock held(mLock);
    if (mManager != nullptr) {
        transport::logLine("%s", whyNotContext(mPath, EBUSY).c_str());
        return false;
    }
    // Set before the driver can deliver the first call.
    mProcess.contextManager = manager.get();
    const int error = mProcess.device->becomeContextManager();
    if (error != 0) {
        mProcess.contextManager = nullptr;
        transport::logLine("%s", whyNotContext(mPath, error).c_str());
        return false;
    }
    mManager = manager;
    return true;
}

void DriverTransport::startThreads() {
    if (transport::refusedAfterFork()) {
        return;
    }
    mProcess.threads.retry();
    if (!mStarted.exchange(true)) {
        mThreads.startLooper();
    }
}

void DriverTransport::setMaxThreads(size_t count) {
    if (transport::refusedAfterFork()) {
        return;
    }
    // The first looper is not requested.
    const auto asked = static_cast<uint32_t>(std::clamp<size_t>(count, 1, 256) - 1);
    (void)mProcess.device->setMaxThreads(asked);  // cannot fail on an open device
}

void DriverTransport::serveForever() {
    if (!transport::refusedAfterFork()) {
        mThreads.current().serveForever(BC_ENTER_LOOPER);
    }
}

void DriverTransport::flush() {
    if (!transport::isForkedChild()) {
        mThreads.current().flush();
    }
}

}  // namespace android::kernel
