// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_INCOMING_H
#define VOXTREL_SOCKET_INCOMING_H

#include <optional>

#include "binder/Parcel.h"
#include "socket/Message.h"
#include "socket/Overtaking.h"
#include "socket/Quota.h"

namespace android::transport {

/// One received message in full.
struct Incoming {
    Parcel parcel;
    Envelope envelope;
    /// A one-way call whose binders or bytes could not be received: it is queued, and not served.
    bool lost = false;
    /// Of a one-way call in the manners of a driver.
    Overtaking::Arrival arrival;
    /// While it is queued.
    std::optional<QuotaCharge> charge;

    /// What it takes while it is queued.
    QuotaAmount amount() const {
        return {envelope.fdCount(), sizeof(Incoming) + parcel.dataSize()};
    }
};

}  // namespace android::transport

#endif
