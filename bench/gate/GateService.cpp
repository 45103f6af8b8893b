// SPDX-License-Identifier: Apache-2.0
#include "bench/gate/GateService.h"

#include <binder/Parcel.h>

#include "bench/gate/Mark.h"
#include "vocabulary/Events.h"

namespace bench {

using android::Parcel;
using android::status_t;

int GateService::registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) {
    const std::lock_guard<std::mutex> held(mLock);
    mLast = cb;
    return QuietService::registerCallback(pid, cb);
}

status_t GateService::onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    switch (code) {
        case kEcho:
            return reply->write(data.readInplace(data.dataSize()), data.dataSize());
        case kNote:
            (void)data.readInplace(data.dataSize());
            return android::OK;
        case kMark:
            mark(static_cast<uint32_t>(data.readInt32()));
            return android::OK;
        case kEmit:
            emit(data.readInt32());
            return android::OK;
        default:
            return QuietService::onTransact(code, data, reply, flags);
    }
}

void GateService::emit(int32_t count) {
    const std::lock_guard<std::mutex> held(mLock);
    for (int32_t left = count; left > 0; --left) {
        (void)mLast->notify(TTS::EVENT_WORD, 1, static_cast<unsigned>(left));
    }
}

}  // namespace bench
