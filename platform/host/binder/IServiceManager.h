// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_ISERVICEMANAGER_H
#define VOXTREL_BINDER_ISERVICEMANAGER_H

#include "binder/IInterface.h"
#include "utils/String16.h"
#include "utils/Vector.h"

namespace android {

/// Where services are found by name.
class IServiceManager : public IInterface {
public:
    DECLARE_META_INTERFACE(ServiceManager)

    /// The service of that name, or null. Answers at once: it does not wait for a service to
    /// appear.
    virtual sp<IBinder> getService(const String16& name) const = 0;
    /// The same.
    virtual sp<IBinder> checkService(const String16& name) const = 0;
    /// Registers `service`. A name already taken is given away only when its service has died or
    /// its owner has the same user id: else `PERMISSION_DENIED`. Names have 1 to 127 units, a null
    /// service is refused: `BAD_VALUE`.
    virtual status_t addService(const String16& name, const sp<IBinder>& service,
                                bool allowIsolated = false) = 0;
    /// The names in use, sorted.
    virtual Vector<String16> listServices() = 0;

    enum {
        GET_SERVICE_TRANSACTION = IBinder::FIRST_CALL_TRANSACTION,
        CHECK_SERVICE_TRANSACTION,
        ADD_SERVICE_TRANSACTION,
        LIST_SERVICES_TRANSACTION,
    };
};

/// The process's service manager; never null. Its binder is the manager's node as it is now: null
/// when there is none. Called on: any thread.
sp<IServiceManager> defaultServiceManager();

/// Puts another one in its place, for tests of code that asks for services.
void setDefaultServiceManager(const sp<IServiceManager>& manager);

}  // namespace android

#endif
