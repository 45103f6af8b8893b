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
// How many threads the driver may ask for, beside the first, unless set.
constexpr uint32_t kThreads = 15;

// In the place of a driver that cannot be used.
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

// The proxy itself takes note of the death; that takes a link.
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
    (void)device->setMaxThreads(kThreads);  // fails for nothing that opened
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
               [this] { mThreads.startAsked(); }},
      mThreads(mProcess),
      mContextDeath(new ContextDeath()) {}

sp<IBinder> DriverTransport::knownContext(sp<BpBinder>* dead) {
    if (mManager != nullptr) {
        return mManager;
    }
    if (mContext != nullptr && mContext->nodeHasEnded()) {
        // The driver keeps the dead service manager's handle for whoever holds it, and would go on
        // reporting that death for the next one.
        static_cast<DriverReference&>(mContext->reference()).letGo();
        *dead = std::exchange(mContext, nullptr);
    }
    return mContext;
}

bool DriverTransport::contextAnswers() {
    const Parcel none;
    Parcel reply;
    const auto ping =
        mThreads.current().transact(kContextHandle, IBinder::PING_TRANSACTION, none, &reply, 0);
    return ping.status == OK;
}

sp<IBinder> DriverTransport::contextObject() {
    if (transport::refusedAfterFork()) {
        return nullptr;
    }
    sp<BpBinder> dead;  // goes without the lock
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
    // With the lock: nobody gives the handle up again before the driver knows of this holder.
    Mutex::Autolock held(mLock);
    const sp<IBinder> first = knownContext(&dead);
    return first != nullptr ? first : holdContext();
}

// A call through the dead one's handle would reach the next service manager: only a notice tells
// that it is another.
sp<IBinder> DriverTransport::holdContext() {
    mContext = mThreads.current().proxyOf(kContextHandle);
    mThreads.current().flush();
    (void)mContext->linkToDeath(mContextDeath);  // refused only where the death has been told
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
    // Before the driver can deliver the first call to it.
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
        mThreads.startFirst();
    }
}

void DriverTransport::setMaxThreads(size_t count) {
    if (transport::refusedAfterFork()) {
        return;
    }
    // The first thread is not asked for.
    const auto asked = static_cast<uint32_t>(std::clamp<size_t>(count, 1, 256) - 1);
    (void)mProcess.device->setMaxThreads(asked);  // fails for nothing that opened
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
