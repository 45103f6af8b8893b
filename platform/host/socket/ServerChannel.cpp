// SPDX-License-Identifier: Apache-2.0
#include "socket/ServerChannel.h"

#include <sys/socket.h>

#include "support/Log.h"

namespace android::transport {

void ServerChannel::close() {
    mContext.reactor.remove(*this);
    (void)shutdown(socket().get(), SHUT_RDWR);  // fails where the peer has closed already
}

void ServerChannel::refuse(const char* what, const Envelope& envelope) {
    logLimited("%s from process %d: its connection is closed", what,
               static_cast<int>(envelope.senderPid()));
    close();
}

ServerChannel::Next ServerChannel::check(Received received, const Envelope& envelope) {
    switch (received) {
        case Received::Message:
        case Received::OutOfDescriptors:
        case Received::OutOfMemory:
            // Else sent before SO_PASSCRED was set, or from outside of this pid namespace.
            if (envelope.senderPid() != 0) {
                return Next::Serve;
            }
            refuse("a message without a sender", envelope);
            break;
        case Received::Nothing:
            return Next::Wait;
        case Received::Malformed:
            refuse("a malformed message", envelope);
            break;
        case Received::HungUp:
            close();  // all has been read; a peer that closed it for writing waits for this
            break;
    }
    return Next::Closed;
}

}  // namespace android::transport
