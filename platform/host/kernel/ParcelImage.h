// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_PARCELIMAGE_H
#define VOXTREL_KERNEL_PARCELIMAGE_H

#include <functional>
#include <vector>

#include "binder/Parcel.h"
#include "kernel/Protocol.h"

namespace android::kernel {

/// The data and offsets of a transaction: the parcel's bytes with a flat object for each binder.
/// Without binders these are the parcel's own bytes, so it must outlive this, unchanged.
class ParcelImage {
public:
    explicit ParcelImage(const Parcel& parcel);

    /// BAD_TYPE for a parcel with a binder that is neither a node nor a proxy; else the parcel's
    /// own. Only a parcel that is OK can be sent.
    status_t status() const { return mStatus; }
    void describe(binder_transaction_data* transaction) const;

private:
    const Parcel& mParcel;
    status_t mStatus;
    std::vector<uint8_t> mFlattened;
    std::vector<binder_size_t> mOffsets;
};

/// The proxy of a handle.
using ProxySource = std::function<sp<IBinder>(uint32_t handle)>;

/// Copies a delivered transaction, so that its buffer may be freed at once. A node of this process
/// arrives as the local object.
status_t receiveParcel(const binder_transaction_data& transaction, const ProxySource& proxyOf,
                       Parcel* parcel);

}  // namespace android::kernel

#endif
