// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_CONTROLSOCKET_H
#define VOXTREL_SOCKET_CONTROLSOCKET_H

#include "socket/Deadline.h"
#include "socket/Message.h"

namespace android::transport {

/// The held end of a reference: whoever has it may call the node, and its closing lets the node go.
/// Further sockets are opened through it.
///
/// Called on: any thread. Locks: none.
class ControlSocket {
public:
    explicit ControlSocket(Fd socket) : mSocket(std::move(socket)) {}

    const Fd& fd() const { return mSocket; }

    /// A further socket to the node, for `role`. `WOULD_BLOCK`, with the target, while its process
    /// does not take another one. `holder` is the process that it is for, 0 when that is not known.
    status_t open(Role role, const PeerIdentity& holder, Fd* out, PollTarget& target) const;

    /// Has the node gone?
    bool hasEnded() const { return hasHungUp(mSocket); }
    /// Why another socket to the node has been closed: `DEAD_OBJECT` when the node goes before the
    /// deadline, else `FAILED_TRANSACTION`. A dying process closes one socket after the other.
    status_t whyClosed(Deadline& deadline) const;

private:
    const Fd mSocket;
};

}  // namespace android::transport

#endif
