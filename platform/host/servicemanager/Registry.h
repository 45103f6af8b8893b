// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICEMANAGER_REGISTRY_H
#define VOXTREL_SERVICEMANAGER_REGISTRY_H

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>

#include "binder/IServiceManager.h"
#include "utils/Mutex.h"

namespace android {

/// The names of all services, for all processes. Forgets a service when it dies, at the latest when
/// somebody asks for it.
///
/// Called on: binder threads. Locks: its own, not while it reports.
class Registry : public BnInterface<IServiceManager> {
public:
    /// `report` is given one line, without its end, for each change.
    explicit Registry(std::function<void(const std::string&)> report);

    sp<IBinder> getService(const String16& name) const override;
    sp<IBinder> checkService(const String16& name) const override;
    status_t addService(const String16& name, const sp<IBinder>& service,
                        bool allowIsolated = false) override;
    Vector<String16> listServices() override;

protected:
    ~Registry() override;
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override;

private:
    class Notice;
    struct Entry {
        sp<IBinder> service;
        sp<IBinder::DeathRecipient> notice;
        uid_t owner;
        pid_t pid;
    };

    bool hasRoom(const String16& name, uid_t owner) const PLATFORM_REQUIRES(mLock);
    status_t listTo(Parcel* reply);
    /// Reports the death of the service that was registered with this notice, once.
    void forget(const String16& name, const IBinder::DeathRecipient* notice) const;

    const std::function<void(const std::string&)> mReport;
    mutable Mutex mLock;
    // Mutable: a look-up drops a service that has died.
    mutable std::map<String16, Entry> mEntries PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android

#endif
