// SPDX-License-Identifier: Apache-2.0
#include "binder/internal/ManagerCall.h"

#include "binder/ProcessState.h"

namespace android {

status_t callManager(uint32_t code, const Parcel& data, Parcel* reply) {
    status_t status = DEAD_OBJECT;
    for (int attempt = 0; status == DEAD_OBJECT && attempt < 2; ++attempt) {
        const sp<IBinder> manager = ProcessState::self()->getContextObject(nullptr);
        if (manager == nullptr) {
            return DEAD_OBJECT;
        }
        status = manager->transact(code, data, reply);
    }
    return status;
}

}  // namespace android
