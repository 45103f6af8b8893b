// SPDX-License-Identifier: Apache-2.0
#include "binder/internal/ParcelFrame.h"

namespace android {

bool ParcelFrame::reserve(size_t size) {
    return size <= mParcel.mCapacity || mParcel.grow(size) == OK;
}

void ParcelFrame::setContents(size_t size) {
    mParcel.mSize = size;
    mParcel.mPosition = 0;
}

void ParcelFrame::attach(size_t offset, const sp<IBinder>& binder) {
    mParcel.mObjects.push_back({offset, binder});
}

}  // namespace android
