// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_INCOMING_H
#define VOXTREL_BINDER_TRANSPORT_INCOMING_H

#include <optional>

#include "binder/Parcel.h"
#include "binder/transport/Lease.h"
#include "binder/transport/Message.h"

namespace android::transport {

/// One received message in full.
struct Incoming {
    Parcel parcel;
    Envelope envelope;
    /// For a one-way call that takes much room while it waits.
    std::optional<Lease> lease;
};

}  // namespace android::transport

#endif
