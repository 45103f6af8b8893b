// SPDX-License-Identifier: Apache-2.0
#include "binder/ServiceOwner.h"

#include "binder/IServiceManager.h"
#include "binder/Parcel.h"
#include "binder/ProcessState.h"
#include "binder/internal/ManagerToken.h"

namespace android {
namespace {

/// Asks a second time where the first manager has just died.
status_t ask(const Parcel& name, Parcel* reply) {
    status_t status = DEAD_OBJECT;
    for (int attempt = 0; status == DEAD_OBJECT && attempt < 2; ++attempt) {
        const sp<IBinder> manager = ProcessState::self()->getContextObject(nullptr);
        if (manager == nullptr) {
            return DEAD_OBJECT;
        }
        status = manager->transact(GET_OWNED_SERVICE_TRANSACTION, name, reply);
    }
    return status;
}

}  // namespace

status_t findOwnedService(const String16& name, OwnedService& found) {
    Parcel data;
    Parcel reply;
    writeManagerToken(data);
    data.writeString16(name);
    const status_t status = ask(data, &reply);
    if (status != OK) {
        return status;
    }
    const sp<IBinder> service = reply.readStrongBinder();
    int32_t owner = 0;
    int32_t process = 0;
    if (service != nullptr && reply.readInt32(&owner) != OK) {
        return BAD_VALUE;
    }
    if (service == nullptr || reply.readInt32(&process) != OK) {
        process = 0;
    }
    found.service = service;
    found.process = process;
    found.owner = service != nullptr ? static_cast<uid_t>(owner) : static_cast<uid_t>(-1);
    return OK;
}

}  // namespace android
