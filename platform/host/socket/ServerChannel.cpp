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

bool ServerChannel::accepts(const Envelope& envelope) {
    // Sent before SO_PASSCRED was set, or by a process outside of this one's pid namespace.
    if (envelope.senderPid() == 0) {
        refuse("a message without a sender", envelope);
        return false;
    }
    return true;
}

bool ServerChannel::survives(Received received, const Envelope& envelope) {
    if (received == Received::Nothing) {
        return true;
    }
    if (received == Received::Malformed) {
        refuse("a malformed message", envelope);
    } else {
        close();  // all of it has been read; a peer that closed it for writing waits for this
    }
    return false;
}

}  // namespace android::transport
