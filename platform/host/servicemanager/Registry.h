// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICEMANAGER_REGISTRY_H
#define VOXTREL_SERVICEMANAGER_REGISTRY_H

#include <sys/types.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "binder/IServiceManager.h"
#include "binder/ServiceOwner.h"
#include "support/LogLevel.h"
#include "utils/Mutex.h"

namespace android {

/// The services of all processes by name. Removes a service when it dies, at the latest at the next
/// look-up.
///
/// Called on: binder threads. Locks: its own, not while it reports.
class Registry : public BnInterface<IServiceManager> {
public:
    using Report = std::function<void(transport::LogLevel level, const std::string& line)>;
    /// Names that only processes of one user may register.
    using Reservations = std::map<String16, uid_t>;

    /// `report` is given one line, without its end, for each change, and for the first refusal of a
    /// reserved name to each user.
    explicit Registry(Report report, Reservations reserved = {});

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
    bool isReservedForAnother(const String16& name, uid_t user) const;
    void reportReserved(const String16& name, uid_t user, pid_t pid);
    Entry find(const String16& name) const;
    status_t writeName(int32_t index, Parcel* reply) const;
    status_t writeOwned(const String16& name, Parcel* reply) const;
    /// Reports the death of the service that was registered with this notice, once.
    void forget(const String16& name, const IBinder::DeathRecipient* notice) const;

    const Report mReport;
    const Reservations mReserved;
    mutable Mutex mLock;
    // Mutable: a look-up drops a service that has died.
    mutable std::map<String16, Entry> mEntries PLATFORM_GUARDED_BY(mLock);
    std::set<std::pair<String16, uid_t>> mToldReserved PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android

#endif
