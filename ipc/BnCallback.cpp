// SPDX-License-Identifier: Apache-2.0
#include "ipc/BnCallback.h"

namespace TTS {

android::status_t BnCallback::onTransact(uint32_t code, const android::Parcel& data,
                                         android::Parcel* reply, uint32_t flags) {
    if (code != kNotify) {
        return android::BBinder::onTransact(code, data, reply, flags);
    }
    const auto a = static_cast<unsigned int>(data.readInt32());
    const auto b = static_cast<unsigned int>(data.readInt32());
    const auto c = static_cast<unsigned int>(data.readInt32());
    const bool delivered = notify(a, b, c);
    if (reply != nullptr) {
        reply->writeInt32(delivered ? 1 : 0);
    }
    return android::NO_ERROR;
}

}  // namespace TTS
