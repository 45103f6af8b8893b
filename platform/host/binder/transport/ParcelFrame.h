// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_PARCELFRAME_H
#define VOXTREL_BINDER_TRANSPORT_PARCELFRAME_H

#include <cstddef>
#include <cstdint>

#include "binder/Parcel.h"
#include "binder/transport/Wire.h"

namespace android {

/// A parcel as the transport sees it: one block of memory with room for a message's header right in
/// front of the data, and the binders beside it. A parcel is sent from there and received into
/// there in one piece.
class ParcelFrame {
public:
    static constexpr size_t kOwnRoom = Parcel::kHeadroom + Parcel::kInlineCapacity;
    static_assert(Parcel::kHeadroom == sizeof(transport::Header), "header in front of the data");

    explicit ParcelFrame(const Parcel& parcel)
        // The room for the header is scratch space, not part of what the parcel holds.
        : mParcel(const_cast<Parcel&>(parcel)) {}

    uint8_t* block() { return mParcel.mBlock; }
    size_t objectCount() const { return mParcel.mObjects.size(); }
    size_t objectOffset(size_t index) const { return mParcel.mObjects[index].offset; }
    const sp<IBinder>& objectBinder(size_t index) const { return mParcel.mObjects[index].binder; }

    /// Makes room for a block of `size` bytes in all; what is there so far is kept.
    bool reserve(size_t size, size_t filled);
    /// The parcel now holds the first `size` bytes behind the header.
    void setContents(size_t size);
    void attach(size_t offset, const sp<IBinder>& binder);
    /// Records are kept sorted by place, as the wire wants them.
    void sortObjects();

private:
    Parcel& mParcel;
};

}  // namespace android

#endif
