// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_PARCELFRAME_H
#define VOXTREL_BINDER_INTERNAL_PARCELFRAME_H

#include <cstddef>
#include <cstdint>

#include "binder/Parcel.h"

namespace android {

/// A parcel as a transport sees it: one block of memory with room for a message's header right in
/// front of the data, so that a message can be received in one piece, and the binders beside it.
///
/// To send a parcel, a transport takes `data`, `dataSize` and `objects`. To receive one, it fills
/// the parcel (by `Parcel::setData`, or in place) and attaches each binder at its offset.
class ParcelFrame {
public:
    static constexpr size_t kHeadroom = Parcel::kHeadroom;
    /// Of the block that each parcel has without an allocation.
    static constexpr size_t kOwnRoom = Parcel::kHeadroom + Parcel::kInlineCapacity;
    /// What a binder takes in the data: the size of the driver's flat_binder_object.
    static constexpr size_t kBinderSize = Parcel::kBinderSize;

    explicit ParcelFrame(Parcel& parcel) : mParcel(parcel) {}

    /// Every binder that is not null, with the `offset` of its `kBinderSize` bytes in the data;
    /// sorted by offset. A multiple of 4, unless the writer has set another position.
    static const auto& objects(const Parcel& parcel) { return parcel.mObjects; }

    uint8_t* block() { return mParcel.mBlock; }
    /// Makes room for `size` bytes behind the header, in an empty parcel. False without memory.
    bool reserve(size_t size);
    /// The parcel now holds the first `size` bytes behind the header.
    void setContents(size_t size);
    /// `offset` lies behind those that are attached already. What the bytes there say does not
    /// matter any more.
    void attach(size_t offset, const sp<IBinder>& binder);

private:
    Parcel& mParcel;
};

}  // namespace android

#endif
