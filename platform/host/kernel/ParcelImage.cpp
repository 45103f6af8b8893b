// SPDX-License-Identifier: Apache-2.0
#include "kernel/ParcelImage.h"

#include <cstring>

#include "binder/BpBinder.h"
#include "binder/internal/ParcelFrame.h"
#include "kernel/FlatObject.h"
#include "kernel/HandleReference.h"

namespace android::kernel {

namespace {

status_t flatten(const sp<IBinder>& binder, flat_binder_object* object) {
    BBinder* const node = binder->localBinder();
    BpBinder* const proxy = binder->remoteBinder();
    if (node == nullptr && proxy == nullptr) {
        return BAD_TYPE;
    }
    *object = node != nullptr ? flatNode(*node) : flatHandle(handleOf(*proxy));
    return OK;
}

sp<IBinder> unflatten(const flat_binder_object& object, const ProxySource& proxyOf) {
    switch (object.hdr.type) {
        case BINDER_TYPE_BINDER:
            return nodeOf({object.binder, object.cookie});
        case BINDER_TYPE_HANDLE:
            return proxyOf(object.handle);
        default:
            return nullptr;  // weak ones are not offered, descriptors not accepted
    }
}

}  // namespace

ParcelImage::ParcelImage(const Parcel& parcel) : mParcel(parcel), mStatus(parcel.errorCheck()) {
    const auto& binders = ParcelFrame::objects(parcel);
    if (mStatus != OK || binders.empty()) {
        return;
    }
    mFlattened.assign(parcel.data(), parcel.data() + parcel.dataSize());
    for (const auto& one : binders) {
        flat_binder_object object = {};
        mStatus = flatten(one.binder, &object);
        if (mStatus != OK) {
            return;
        }
        std::memcpy(&mFlattened[one.offset], &object, sizeof(object));
        mOffsets.push_back(one.offset);
    }
}

void ParcelImage::describe(binder_transaction_data* transaction) const {
    transaction->data_size = mParcel.dataSize();
    transaction->data.ptr.buffer = toWord(mFlattened.empty() ? mParcel.data() : mFlattened.data());
    transaction->offsets_size = mOffsets.size() * sizeof(binder_size_t);
    transaction->data.ptr.offsets = toWord(mOffsets.data());
}

status_t receiveParcel(const binder_transaction_data& transaction, const ProxySource& proxyOf,
                       Parcel* parcel) {
    const auto size = static_cast<size_t>(transaction.data_size);
    const auto* data = toPointer<const uint8_t>(transaction.data.ptr.buffer);
    const status_t status = parcel->setData(data, size);
    if (status != OK) {
        return status;
    }
    const auto* offsets = toPointer<const binder_size_t>(transaction.data.ptr.offsets);
    const size_t count = static_cast<size_t>(transaction.offsets_size) / sizeof(*offsets);
    for (size_t i = 0; i < count; ++i) {
        const auto offset = static_cast<size_t>(offsets[i]);
        flat_binder_object object = {};
        std::memcpy(&object, data + offset, sizeof(object));
        const sp<IBinder> binder = unflatten(object, proxyOf);
        if (binder != nullptr) {
            ParcelFrame(*parcel).attach(offset, binder);
        }
    }
    return OK;
}

}  // namespace android::kernel
