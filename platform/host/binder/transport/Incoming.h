// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_INCOMING_H
#define VOXTREL_BINDER_TRANSPORT_INCOMING_H

#include "binder/Parcel.h"
#include "binder/transport/Message.h"

namespace android::transport {

/// One received message in full.
struct Incoming {
    Parcel parcel;
    Envelope envelope;
};

}  // namespace android::transport

#endif
