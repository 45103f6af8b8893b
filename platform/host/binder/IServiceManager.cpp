// SPDX-License-Identifier: Apache-2.0
#include "binder/IServiceManager.h"

#include <map>

#include "binder/Parcel.h"
#include "utils/Mutex.h"

namespace android {

namespace {

// The services of one process, for the processes that stay alone.
class Registry : public BnInterface<IServiceManager> {
public:
    sp<IBinder> getService(const String16& name) const override {
        Mutex::Autolock held(mLock);
        const auto found = mServices.find(name);
        return found != mServices.end() ? found->second : nullptr;
    }
    sp<IBinder> checkService(const String16& name) const override { return getService(name); }
    status_t addService(const String16& name, const sp<IBinder>& service,
                        bool /*allowIsolated*/) override {
        if (name.size() == 0 || name.size() > 127 || service == nullptr) {
            return BAD_VALUE;
        }
        Mutex::Autolock held(mLock);
        mServices[name] = service;
        return OK;
    }
    Vector<String16> listServices() override {
        Mutex::Autolock held(mLock);
        Vector<String16> names;
        for (const auto& service : mServices) {
            names.push_back(service.first);
        }
        return names;
    }

private:
    mutable Mutex mLock;
    std::map<String16, sp<IBinder>> mServices VOXTREL_GUARDED_BY(mLock);
};

class BpServiceManager : public BpInterface<IServiceManager> {
public:
    explicit BpServiceManager(const sp<IBinder>& remote) : BpInterface(remote) {}

    sp<IBinder> getService(const String16& name) const override {
        Parcel data;
        Parcel reply;
        data.writeString16(name);
        (void)remote()->transact(GET_SERVICE_TRANSACTION, data, &reply);
        return reply.readStrongBinder();
    }
    sp<IBinder> checkService(const String16& name) const override { return getService(name); }
    status_t addService(const String16& name, const sp<IBinder>& service,
                        bool /*allowIsolated*/) override {
        Parcel data;
        Parcel reply;
        data.writeString16(name);
        data.writeStrongBinder(service);
        const status_t status = remote()->transact(ADD_SERVICE_TRANSACTION, data, &reply);
        return status == OK ? reply.readInt32() : status;
    }
    Vector<String16> listServices() override {
        Parcel data;
        Parcel reply;
        (void)remote()->transact(LIST_SERVICES_TRANSACTION, data, &reply);
        Vector<String16> names;
        String16 name;
        for (int32_t left = reply.readInt32(); left > 0 && reply.readString16(&name) == OK;
             --left) {
            names.push_back(name);
        }
        return names;
    }
};

struct DefaultManager {
    Mutex lock;
    sp<IServiceManager> manager VOXTREL_GUARDED_BY(lock);
};

// Never destroyed: threads of the runtime may still ask while the process exits.
DefaultManager& defaultManager() {
    static auto* const instance = new DefaultManager();
    return *instance;
}

}  // namespace

IMPLEMENT_META_INTERFACE(ServiceManager, "voxtrel.IServiceManager")

sp<IServiceManager> defaultServiceManager() {
    DefaultManager& instance = defaultManager();
    Mutex::Autolock held(instance.lock);
    if (instance.manager == nullptr) {
        instance.manager = new Registry();
    }
    return instance.manager;
}

void setDefaultServiceManager(const sp<IServiceManager>& manager) {
    DefaultManager& instance = defaultManager();
    Mutex::Autolock held(instance.lock);
    instance.manager = manager;
}

}  // namespace android
