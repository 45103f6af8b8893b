// SPDX-License-Identifier: Apache-2.0
// The service manager's interface as newer releases of the platform leave it open.
#ifndef VOXTREL_TESTS_HOUSE_NEWER_PLATFORM_ISERVICEMANAGER_H
#define VOXTREL_TESTS_HOUSE_NEWER_PLATFORM_ISERVICEMANAGER_H

#include <optional>
#include <string>
#include <vector>

#include "binder/IInterface.h"
#include "utils/Vector.h"

namespace android {

class IServiceManager : public IInterface {
public:
    struct ConnectionInfo {
        std::string ipAddress;
        unsigned int port;
    };
    struct ServiceDebugInfo {
        std::string name;
        int pid;
    };
    class LocalRegistrationCallback : public virtual RefBase {};

    virtual sp<IBinder> getService(const String16& name) const = 0;
    virtual sp<IBinder> checkService(const String16& name) const = 0;
    virtual status_t addService(const String16& name, const sp<IBinder>& service,
                                bool allowIsolated = false, int dumpFlags = 8) = 0;
    virtual Vector<String16> listServices(int dumpFlags = 15) = 0;
    virtual sp<IBinder> waitForService(const String16& name) = 0;
    virtual bool isDeclared(const String16& name) = 0;
    virtual Vector<String16> getDeclaredInstances(const String16& interface) = 0;
    virtual std::optional<String16> updatableViaApex(const String16& name) = 0;
    virtual Vector<String16> getUpdatableNames(const String16& apex) = 0;
    virtual std::optional<ConnectionInfo> getConnectionInfo(const String16& name) = 0;
    virtual status_t registerForNotifications(const String16& name,
                                              const sp<LocalRegistrationCallback>& told) = 0;
    virtual status_t unregisterForNotifications(const String16& name,
                                                const sp<LocalRegistrationCallback>& told) = 0;
    virtual std::vector<ServiceDebugInfo> getServiceDebugInfo() = 0;
};

sp<IServiceManager> defaultServiceManager();

}  // namespace android

#endif
