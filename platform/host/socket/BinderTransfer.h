// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_BINDERTRANSFER_H
#define VOXTREL_SOCKET_BINDERTRANSFER_H

#include "binder/Parcel.h"
#include "socket/Message.h"

namespace android::transport {

class Deadline;

/// Who a parcel is sent to, as far as it matters.
struct Destination {
    pid_t pid = 0;  ///< 0 when it is not known
    bool isManager = false;
};

/// Makes a reference of its own, for the receiver, to each binder in `parcel`. `OK`, also for nodes
/// that have died; else why the parcel cannot be sent. `deadline`: for owners that have to take
/// part in it.
status_t exportBinders(const Parcel& parcel, Attachments* out, Deadline& deadline,
                       const Destination& to);

/// Puts the binders of a received message into its parcel. An object of this process comes home as
/// itself, a node that is known here already as the proxy it has. False for a descriptor that is no
/// reference.
bool importBinders(Envelope& envelope, Parcel& parcel);

/// The proxy of the service manager's node, whose reference has no name that others know.
sp<IBinder> importManager(Fd control);

/// Has the node behind a proxy gone, whether or not anybody has noticed?
bool hasEnded(const sp<IBinder>& proxy);

}  // namespace android::transport

#endif
