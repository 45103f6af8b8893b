// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_PARCELFRAME_H
#define VOXTREL_SOCKET_PARCELFRAME_H

#include <cstddef>
#include <cstdint>

#include "binder/Parcel.h"
#include "socket/Wire.h"

namespace android {

/// A parcel as the transport sees it: one block of memory with room for a message's header right in
/// front of the data, so that a message is received in one piece, and the binders beside it.
class ParcelFrame {
public:
    static constexpr size_t kOwnRoom = Parcel::kHeadroom + Parcel::kInlineCapacity;
    static_assert(Parcel::kHeadroom == sizeof(transport::Header), "header in front of the data");

    explicit ParcelFrame(Parcel& parcel) : mParcel(parcel) {}

    /// The binders with their places, sorted by place, as the wire wants them.
    static const auto& objects(const Parcel& parcel) { return parcel.mObjects; }

    uint8_t* block() { return mParcel.mBlock; }
    /// Makes room for a block of `size` bytes in all; what is there so far is kept.
    bool reserve(size_t size, size_t filled);
    /// The parcel now holds the first `size` bytes behind the header.
    void setContents(size_t size);
    /// `offset` lies behind those that are attached already.
    void attach(size_t offset, const sp<IBinder>& binder);

private:
    Parcel& mParcel;
};

}  // namespace android

#endif
