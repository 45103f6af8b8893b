// SPDX-License-Identifier: Apache-2.0
#include "check/CallNode.h"

#include "check/Peer.h"
#include "check/PeerNode.h"

namespace check {

bool CallNode::waitForCall(int32_t number) {
    std::unique_lock<std::mutex> held(mLock);
    return mChanged.wait_for(held, kSoon, [&] { return mNumber == number; });
}

android::status_t CallNode::onTransact(uint32_t code, const android::Parcel& data,
                                       android::Parcel* reply, uint32_t flags) {
    if (code != kAdd) {
        return BBinder::onTransact(code, data, reply, flags);
    }
    const std::lock_guard<std::mutex> held(mLock);
    mNumber = data.readInt32();
    mChanged.notify_all();
    return reply != nullptr ? reply->writeInt32(mNumber) : android::OK;
}

int32_t callThrough(const android::sp<android::IBinder>& peer,
                    const android::sp<android::IBinder>& node, int32_t number, uint32_t flags) {
    android::Parcel request;
    request.writeStrongBinder(node);
    request.writeInt32(static_cast<int32_t>(flags));
    request.writeInt32(number);
    android::Parcel reply;
    const android::status_t status = peer->transact(kCallBack, request, &reply, 0);
    return status == android::OK ? reply.readInt32() : status;
}

}  // namespace check
