// SPDX-License-Identifier: Apache-2.0
// The service manager's interface as releases in between leave it open: flags, and nothing new.
#ifndef VOXTREL_TESTS_HOUSE_OLDER_PLATFORM_ISERVICEMANAGER_H
#define VOXTREL_TESTS_HOUSE_OLDER_PLATFORM_ISERVICEMANAGER_H

#include "binder/IInterface.h"
#include "utils/Vector.h"

namespace android {

class IServiceManager : public IInterface {
public:
    virtual sp<IBinder> getService(const String16& name) const = 0;
    virtual sp<IBinder> checkService(const String16& name) const = 0;
    virtual status_t addService(const String16& name, const sp<IBinder>& service,
                                bool allowIsolated = false, int dumpFlags = 8) = 0;
    virtual Vector<String16> listServices(int dumpFlags = 15) = 0;
};

sp<IServiceManager> defaultServiceManager();

}  // namespace android

#endif
