// SPDX-License-Identifier: Apache-2.0
#include "servicemanager/Registry.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "binder/BpBinder.h"
#include "binder/IPCThreadState.h"
#include "binder/Parcel.h"
#include "binder/internal/ManagerToken.h"

namespace android {

namespace {

constexpr size_t kLongestName = 127;
constexpr size_t kMaxServices = 1024;
constexpr size_t kMaxOfOtherUser = kMaxServices / 2;
constexpr size_t kMaxToldReserved = 1024;

// For the log: what is not printable ASCII shows as a question mark.
std::string printable(const String16& name) {
    std::string text;
    for (size_t i = 0; i < name.size(); ++i) {
        const char16_t unit = static_cast<const char16_t*>(name)[i];
        text.push_back(unit >= 0x20 && unit < 0x7F ? static_cast<char>(unit) : '?');
    }
    return text;
}

// Without a call to the service, which may be slow.
bool isDead(const sp<IBinder>& service) {
    const BpBinder* proxy = service->remoteBinder();
    return proxy != nullptr && proxy->nodeHasEnded();
}

}  // namespace

// One registration's link to the death of its service.
class Registry::Notice : public IBinder::DeathRecipient {
public:
    Notice(const sp<Registry>& registry, const String16& name) : mRegistry(registry), mName(name) {}

    void binderDied(const wp<IBinder>& /*who*/) override {
        const sp<Registry> registry = mRegistry.promote();
        if (registry != nullptr) {
            registry->forget(mName, this);
        }
    }

private:
    const wp<Registry> mRegistry;
    const String16 mName;
};

Registry::Registry(Report report, Reservations reserved)
    : mReport(std::move(report)), mReserved(std::move(reserved)) {}

Registry::~Registry() = default;

sp<IBinder> Registry::getService(const String16& name) const {
    return find(name).service;
}

Registry::Entry Registry::find(const String16& name) const {
    Entry entry = {};
    {
        Mutex::Autolock held(mLock);
        const auto found = mEntries.find(name);
        if (found == mEntries.end()) {
            return {};
        }
        entry = found->second;
    }
    // The notice of its death may be on its way: a client that looks the name up because of that
    // death must not be given the dead service again.
    if (isDead(entry.service)) {
        forget(name, entry.notice.get());
        return {};
    }
    return entry;
}

sp<IBinder> Registry::checkService(const String16& name) const {
    return getService(name);
}

status_t Registry::addService(const String16& name, const sp<IBinder>& service,
                              bool /*allowIsolated*/) {
    if (name.size() == 0 || name.size() > kLongestName || service == nullptr) {
        return BAD_VALUE;
    }
    const uid_t owner = IPCThreadState::self()->getCallingUid();
    const pid_t pid = IPCThreadState::self()->getCallingPid();
    if (isReservedForAnother(name, owner)) {
        reportReserved(name, owner, pid);
        return PERMISSION_DENIED;
    }
    if (isDead(service)) {
        return DEAD_OBJECT;
    }
    const sp<Notice> notice = new Notice(sp<Registry>(this), name);
    Entry old = {};  // let go outside of the lock
    {
        Mutex::Autolock held(mLock);
        const auto found = mEntries.find(name);
        if (found != mEntries.end() && found->second.owner != owner &&
            !isDead(found->second.service)) {
            return PERMISSION_DENIED;
        }
        if (!hasRoom(name, owner)) {
            return NO_MEMORY;
        }
        // A service of this very process cannot die before its registry.
        const status_t linked = service->linkToDeath(notice);
        if (linked != OK && linked != INVALID_OPERATION) {
            return linked;
        }
        if (found != mEntries.end()) {
            old = found->second;
        }
        mEntries[name] = {service, notice, owner, pid};
    }
    if (old.service != nullptr) {
        (void)old.service->unlinkToDeath(old.notice);  // it may have died meanwhile
    }
    mReport(transport::LogLevel::Info, (old.service != nullptr ? "replaced " : "added ") +
                                           printable(name) + " (process " + std::to_string(pid) +
                                           ", user " + std::to_string(owner) + ")");
    return OK;
}

bool Registry::isReservedForAnother(const String16& name, uid_t user) const {
    const auto reserved = mReserved.find(name);
    return reserved != mReserved.end() && reserved->second != user;
}

// A process that is refused may try again and again; one line is enough.
void Registry::reportReserved(const String16& name, uid_t user, pid_t pid) {
    {
        Mutex::Autolock held(mLock);
        if (mToldReserved.size() >= kMaxToldReserved) {
            mToldReserved.clear();
        }
        if (!mToldReserved.emplace(name, user).second) {
            return;
        }
    }
    mReport(transport::LogLevel::Warning, "refused " + printable(name) + " to process " +
                                              std::to_string(pid) + " of user " +
                                              std::to_string(user) + ": it is reserved for user " +
                                              std::to_string(mReserved.at(name)));
}

// Processes of another user cannot use up the names that the manager's own user needs, nor take a
// reserved one.
bool Registry::hasRoom(const String16& name, uid_t owner) const {
    if (mReserved.count(name) != 0) {
        return true;
    }
    const auto found = mEntries.find(name);
    if (found != mEntries.end() && found->second.owner == owner) {
        return true;
    }
    if (found == mEntries.end() && mEntries.size() >= kMaxServices) {
        return false;
    }
    const auto isOwners = [owner](const auto& entry) { return entry.second.owner == owner; };
    const auto held = std::count_if(mEntries.begin(), mEntries.end(), isOwners);
    return owner == geteuid() || static_cast<size_t>(held) < kMaxOfOtherUser;
}

Vector<String16> Registry::listServices() {
    Mutex::Autolock held(mLock);
    Vector<String16> names;
    for (const auto& entry : mEntries) {
        names.push_back(entry.first);
    }
    return names;
}

void Registry::forget(const String16& name, const IBinder::DeathRecipient* notice) const {
    Entry gone = {};
    {
        Mutex::Autolock held(mLock);
        const auto found = mEntries.find(name);
        if (found == mEntries.end() || found->second.notice.get() != notice) {
            return;
        }
        gone = found->second;
        mEntries.erase(found);
    }
    mReport(transport::LogLevel::Info,
            "removed " + printable(name) + ": process " + std::to_string(gone.pid) + " has died");
}

status_t Registry::writeName(int32_t index, Parcel* reply) const {
    Mutex::Autolock held(mLock);
    if (index < 0 || static_cast<size_t>(index) >= mEntries.size()) {
        return BAD_INDEX;
    }
    return reply->writeString16(std::next(mEntries.begin(), index)->first);
}

status_t Registry::writeOwned(const String16& name, Parcel* reply) const {
    const Entry entry = find(name);
    status_t status = reply->writeStrongBinder(entry.service);
    if (status == OK && entry.service != nullptr) {
        reply->writeInt32(static_cast<int32_t>(entry.owner));
        status = reply->writeInt32(entry.pid);
    }
    return status;
}

status_t Registry::onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    const bool isCommon = code > static_cast<uint32_t>(LAST_CALL_TRANSACTION);
    if (isCommon || reply == nullptr) {
        return BBinder::onTransact(code, data, reply, flags);
    }
    if (!readManagerToken(data)) {
        return BAD_TYPE;
    }
    switch (code) {
        case GET_SERVICE_TRANSACTION:
        case CHECK_SERVICE_TRANSACTION:
            return reply->writeStrongBinder(getService(data.readString16()));
        case ADD_SERVICE_TRANSACTION: {
            const String16 name = data.readString16();
            return reply->writeInt32(addService(name, data.readStrongBinder()));
        }
        case GET_OWNED_SERVICE_TRANSACTION:
            return writeOwned(data.readString16(), reply);
        case LIST_SERVICES_TRANSACTION:
            return writeName(data.readInt32(), reply);
        default:
            return UNKNOWN_TRANSACTION;
    }
}

}  // namespace android
