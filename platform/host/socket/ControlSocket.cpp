// SPDX-License-Identifier: Apache-2.0
#include "socket/ControlSocket.h"

#include <poll.h>

#include "support/Log.h"

namespace android::transport {

status_t ControlSocket::open(Role role, const PeerIdentity& holder, Fd* out,
                             PollTarget& target) const {
    SocketPair pair = makeSocketPair();
    if (!pair.held.valid()) {
        logLimited("out of file descriptors: a call fails");
        return FAILED_TRANSACTION;
    }
    target = {mSocket.get(), POLLOUT};
    const status_t status = sendAdopt(mSocket, role, pair.served, holder);
    if (status == OK) {
        *out = std::move(pair.held);
    }
    return status;
}

status_t ControlSocket::whyClosed(Deadline& deadline) const {
    return retryUntil(deadline, [this](PollTarget& target) {
        target = {mSocket.get(), POLLRDHUP};
        return hasEnded() ? DEAD_OBJECT : WOULD_BLOCK;
    });
}

}  // namespace android::transport
