// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SERVERCHANNEL_H
#define VOXTREL_SOCKET_SERVERCHANNEL_H

#include "binder/Binder.h"
#include "socket/Incoming.h"
#include "socket/Quota.h"
#include "socket/Reactor.h"

namespace android::transport {

/// The end of a connection that this process serves; holds the node for its peer.
class ServerChannel : public EventHandler {
public:
    ServerChannel(Fd socket, sp<BBinder> node, QuotaCharge charge)
        : EventHandler(std::move(socket)), mNode(std::move(node)), mCharge(std::move(charge)) {}

    const sp<BBinder>& node() const { return mNode; }

    /// Nothing more is read from the peer, and it sees a hang-up. What was read may hold on to this
    /// end for long.
    void close();
    /// A message of the peer's that makes no sense, or that it may not send: only the peer suffers.
    void refuse(const char* what, const Envelope& envelope);
    /// False when the kernel does not name the message's sender, who has been refused then.
    bool accepts(const Envelope& envelope);
    /// What to do with a socket that had no message: true, keep it; false, it has been let go.
    bool survives(Received received, const Envelope& envelope);

private:
    const sp<BBinder> mNode;
    const QuotaCharge mCharge;
};

}  // namespace android::transport

#endif
