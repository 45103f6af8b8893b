// SPDX-License-Identifier: Apache-2.0
#include "binder/Binder.h"

#include "binder/Parcel.h"
#include "binder/internal/LocalNode.h"

namespace android {

BBinder* IBinder::localBinder() {
    return nullptr;
}

BpBinder* IBinder::remoteBinder() {
    return nullptr;
}

BBinder::~BBinder() {
    if (transport::LocalNode* const node = mLocalNode) {
        node->objectDestroyed();
    }
}

const String16& BBinder::getInterfaceDescriptor() const {
    static const String16* const none = new String16();
    return *none;
}

bool BBinder::isBinderAlive() const {
    return true;
}

status_t BBinder::pingBinder() {
    return OK;
}

status_t BBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    data.setDataPosition(0);
    const status_t status = code == static_cast<uint32_t>(PING_TRANSACTION)
                                ? pingBinder()
                                : onTransact(code, data, reply, flags);
    if (reply != nullptr) {
        reply->setDataPosition(0);
    }
    return status;
}

status_t BBinder::linkToDeath(const sp<DeathRecipient>& /*recipient*/, void* /*cookie*/,
                              uint32_t /*flags*/) {
    return INVALID_OPERATION;
}

status_t BBinder::unlinkToDeath(const wp<DeathRecipient>& /*recipient*/, void* /*cookie*/,
                                uint32_t /*flags*/, wp<DeathRecipient>* /*outRecipient*/) {
    return INVALID_OPERATION;
}

BBinder* BBinder::localBinder() {
    return this;
}

status_t BBinder::onTransact(uint32_t code, const Parcel& /*data*/, Parcel* reply,
                             uint32_t /*flags*/) {
    if (code != static_cast<uint32_t>(INTERFACE_TRANSACTION)) {
        return UNKNOWN_TRANSACTION;
    }
    return reply != nullptr ? reply->writeString16(getInterfaceDescriptor()) : OK;
}

BpRefBase::BpRefBase(const sp<IBinder>& remote) : mRemote(remote) {}

}  // namespace android
