// SPDX-License-Identifier: Apache-2.0
#include "binder/internal/ParcelFrame.h"

#include <algorithm>

namespace android {

bool ParcelFrame::reserve(size_t size, size_t filled) {
    if (size <= Parcel::kHeadroom + mParcel.mCapacity) {
        return true;
    }
    mParcel.mSize = filled > Parcel::kHeadroom ? filled - Parcel::kHeadroom : 0;
    uint8_t header[Parcel::kHeadroom];
    std::copy_n(mParcel.mBlock, sizeof(header), header);
    if (mParcel.grow(size - Parcel::kHeadroom) != OK) {
        return false;
    }
    std::copy_n(header, sizeof(header), mParcel.mBlock);
    return true;
}

void ParcelFrame::setContents(size_t size) {
    mParcel.mSize = size;
    mParcel.mPosition = 0;
}

void ParcelFrame::attach(size_t offset, const sp<IBinder>& binder) {
    mParcel.mObjects.push_back({offset, binder});
}

}  // namespace android
