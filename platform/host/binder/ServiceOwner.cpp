// SPDX-License-Identifier: Apache-2.0
#include "binder/ServiceOwner.h"

#include "binder/IServiceManager.h"
#include "binder/Parcel.h"
#include "binder/internal/ManagerCall.h"
#include "binder/internal/ManagerToken.h"

namespace android {

status_t findOwnedService(const String16& name, OwnedService& found) {
    Parcel data;
    Parcel reply;
    writeManagerToken(data);
    data.writeString16(name);
    const status_t status = callManager(GET_OWNED_SERVICE_TRANSACTION, data, &reply);
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
