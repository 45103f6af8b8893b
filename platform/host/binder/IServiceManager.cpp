// SPDX-License-Identifier: Apache-2.0
#include "binder/IServiceManager.h"

#include <chrono>
#include <thread>

#include "binder/Parcel.h"
#include "binder/ProcessState.h"
#include "binder/internal/ManagerCall.h"
#include "binder/internal/ManagerToken.h"
#include "binder/transport/Transport.h"
#include "support/ForkGuard.h"
#include "support/Log.h"
#include "support/Manners.h"
#include "utils/Mutex.h"

namespace android {

namespace {

using std::chrono::milliseconds;

// In the manners of a driver: how long a look-up waits for a service to appear, and how long it is
// until it looks again.
constexpr milliseconds kLongestLookUp{5000};
constexpr milliseconds kPause{100};

// The dump priority of a service, which newer service managers read and older ones ignore.
constexpr int32_t kDefaultPriority = 8;
constexpr int32_t kAllPriorities = 15;

// Looks the manager's node up for each call, so that a restarted manager is found.
class BpServiceManager : public BpInterface<IServiceManager> {
public:
    explicit BpServiceManager(const sp<IBinder>& remote) : BpInterface(remote) {}

    sp<IBinder> getService(const String16& name) const override {
        sp<IBinder> service = checkService(name);
        if (!transport::gManners.ofDriver) {
            return service;
        }
        const auto deadline = std::chrono::steady_clock::now() + kLongestLookUp;
        while (service == nullptr && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(kPause);
            service = checkService(name);
        }
        return service;
    }

    sp<IBinder> checkService(const String16& name) const override {
        Parcel data;
        Parcel reply;
        writeManagerToken(data);
        data.writeString16(name);
        (void)ask(CHECK_SERVICE_TRANSACTION, data, &reply);  // no reply reads as no service
        return reply.readStrongBinder();
    }

    status_t addService(const String16& name, const sp<IBinder>& service,
                        bool allowIsolated) override {
        Parcel data;
        Parcel reply;
        writeManagerToken(data);
        data.writeString16(name);
        data.writeStrongBinder(service);
        data.writeBool(allowIsolated);
        data.writeInt32(kDefaultPriority);
        const status_t status = ask(ADD_SERVICE_TRANSACTION, data, &reply);
        return status == OK ? reply.readInt32() : status;
    }

    // One name a call, until the index is out of range.
    Vector<String16> listServices() override {
        Vector<String16> names;
        String16 name;
        while (nameAt(static_cast<int32_t>(names.size()), &name)) {
            names.push_back(name);
        }
        return names;
    }

protected:
    IBinder* onAsBinder() override {
        if (remote() != nullptr) {
            return remote();
        }
        // Held until this thread's next call, since the manager's death may release the proxy.
        static thread_local sp<IBinder> manager;
        manager = ProcessState::self()->getContextObject(nullptr);
        return manager.get();
    }

private:
    bool nameAt(int32_t index, String16* name) const {
        Parcel data;
        Parcel reply;
        writeManagerToken(data);
        data.writeInt32(index);
        data.writeInt32(kAllPriorities);
        return ask(LIST_SERVICES_TRANSACTION, data, &reply) == OK && reply.readString16(name) == OK;
    }

    status_t ask(uint32_t code, const Parcel& data, Parcel* reply) const {
        return remote() != nullptr ? remote()->transact(code, data, reply)
                                   : callManager(code, data, reply);
    }
};

struct DefaultManager {
    Mutex lock;
    sp<IServiceManager> manager PLATFORM_GUARDED_BY(lock);
};

// Never destroyed: threads of the runtime may still ask while the process exits.
DefaultManager& defaultManager() {
    static auto* const instance = new DefaultManager();
    return *instance;
}

bool isKnown(DefaultManager& instance) {
    Mutex::Autolock held(instance.lock);
    return instance.manager != nullptr;
}

bool hasManager() {
    return ProcessState::self()->getContextObject(nullptr) != nullptr;
}

// Without end, as the driver's runtime does; but a forked child would wait for what it cannot use.
void waitForManager(DefaultManager& instance) {
    if (isKnown(instance) || transport::isForkedChild() || hasManager()) {
        return;
    }
    transport::logLine("there is no service manager at %s: waiting for one",
                       transport::transport().contextPlace().c_str());
    while (!isKnown(instance) && !hasManager()) {
        std::this_thread::sleep_for(kPause);
    }
}

}  // namespace

IMPLEMENT_META_INTERFACE(ServiceManager, "android.os.IServiceManager")

sp<IServiceManager> defaultServiceManager() {
    DefaultManager& instance = defaultManager();
    if (transport::gManners.ofDriver) {
        waitForManager(instance);
    }
    Mutex::Autolock held(instance.lock);
    if (instance.manager == nullptr) {
        instance.manager = new BpServiceManager(nullptr);
    }
    return instance.manager;
}

void setDefaultServiceManager(const sp<IServiceManager>& manager) {
    DefaultManager& instance = defaultManager();
    Mutex::Autolock held(instance.lock);
    instance.manager = manager;
}

}  // namespace android
