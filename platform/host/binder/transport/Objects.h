// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_OBJECTS_H
#define VOXTREL_BINDER_TRANSPORT_OBJECTS_H

#include "binder/Parcel.h"
#include "binder/transport/Message.h"

namespace android::transport {

class Patience;

/// Makes a reference of its own, for the receiver, to each binder in `parcel`. `OK`, also for nodes
/// that have died; else why the parcel cannot be sent. `patience`: for owners that have to take
/// part in it. `receiver` is 0 when it is not known.
status_t detachBinders(const Parcel& parcel, Attachments* out, Patience& patience,
                       pid_t receiver = 0);

/// Puts the binders of a received message into its parcel. An object of this process comes home as
/// itself, a node that is known here already as the proxy it has. False for a descriptor that is no
/// reference.
bool attachBinders(Envelope& envelope, Parcel& parcel);

/// The proxy of a node whose reference has no name that others know.
sp<IBinder> wrapReference(Fd door);

/// Has the node behind a proxy gone, whether or not anybody has noticed?
bool hasEnded(const sp<IBinder>& proxy);

}  // namespace android::transport

#endif
