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
    /// A one-way call whose binders or bytes could not be taken: it only has its turn.
    bool lost = false;
    /// Of a one-way call in the manners of a driver.
    Overtaking::Arrival arrival;
    /// While it waits for its turn: what it takes is counted against its sender's share.
    std::optional<QuotaCharge> charge;

    /// What it takes while it waits. All of them together are what a process is limited in.
    QuotaCharge::Amount amount() const {
        return {envelope.fdCount(), sizeof(Incoming) + parcel.dataSize()};
    }
};

}  // namespace android::transport

#endif
