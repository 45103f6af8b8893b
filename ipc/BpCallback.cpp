// SPDX-License-Identifier: Apache-2.0
#include "ipc/BpCallback.h"

namespace TTS {

IMPLEMENT_META_INTERFACE(Callback, "tavix.ICallback")

BpCallback::BpCallback(const android::sp<android::IBinder>& remote)
    : android::BpInterface<ICallback>(remote) {}

bool BpCallback::notify(unsigned int a, unsigned int b, unsigned int c) {
    if (remote() == nullptr) {
        return false;
    }
    android::Parcel request;
    android::Parcel reply;
    for (const unsigned int value : {a, b, c}) {
        request.writeInt32(static_cast<int32_t>(value));
    }
    // The reply of a dead client stays empty; its death is reported to its DeathRecipient.
    (void)remote()->transact(kNotify, request, &reply, android::IBinder::FLAG_ONEWAY);
    return reply.readInt32() != 0;
}

}  // namespace TTS
