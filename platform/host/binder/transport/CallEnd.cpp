// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/CallEnd.h"

#include "binder/transport/Dispatch.h"
#include "binder/transport/ThreadPool.h"

namespace android::transport {

void CallEnd::onReady() {
    bool staying = false;
    const bool kept = serve(staying);
    if (staying) {
        threadPool().endStay();
    }
    if (kept) {
        reactor().rearm(*this);
    }
}

bool CallEnd::serve(bool& staying) {
    Incoming incoming;
    for (;;) {
        const Received received =
            receiveMessage(socket(), staying, incoming.parcel, incoming.envelope);
        if (received != Received::Message) {
            return survives(received, incoming.envelope);
        }
        if (!serveOne(incoming)) {
            return false;
        }
        if (staying ? threadPool().nobodyWaits() : !threadPool().tryStay()) {
            return true;
        }
        staying = true;
    }
}

bool CallEnd::serveOne(Incoming& incoming) {
    if (incoming.envelope.header().kind != Kind::Request) {
        refuse("a message out of place", incoming.envelope);
        return false;
    }
    switch (serveRequest(*node(), incoming, socket())) {
        case Served::Well:
            return true;
        case Served::Badly:
            refuse("a descriptor that is no reference", incoming.envelope);
            return false;
        case Served::InVain:
            reactor().remove(*this);
            return false;
    }
    return false;
}

}  // namespace android::transport
