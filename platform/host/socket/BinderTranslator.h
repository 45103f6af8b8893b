// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_BINDERTRANSLATOR_H
#define VOXTREL_SOCKET_BINDERTRANSLATOR_H

#include "socket/Message.h"

namespace android::transport {

class Deadline;

/// Who a parcel is sent to, as far as it matters.
struct Destination {
    PeerIdentity who{};  ///< pid 0 when it is not known
    bool isManager = false;
};

/// Turns the binders of a parcel into descriptors and names, and back.
///
/// Called on: any thread.
class BinderTranslator {
public:
    /// Makes a reference of its own, for the receiver, to each binder in `parcel`. `OK`, also for
    /// nodes that have died; else why the parcel cannot be sent. `deadline`: for owners that have
    /// to take part in it.
    virtual status_t exportBinders(const Parcel& parcel, Attachments* out, Deadline& deadline,
                                   const Destination& to) = 0;
    /// Puts the binders of a received message into its parcel. An object of this process comes home
    /// as itself, a node that is known here already as the proxy it has. False for a descriptor
    /// that is no reference.
    virtual bool importBinders(Envelope& envelope, Parcel& parcel) = 0;

protected:
    ~BinderTranslator() = default;
};

}  // namespace android::transport

#endif
