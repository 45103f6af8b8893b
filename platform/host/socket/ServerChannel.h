// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SERVERCHANNEL_H
#define VOXTREL_SOCKET_SERVERCHANNEL_H

#include "binder/Binder.h"
#include "socket/Context.h"
#include "socket/Incoming.h"
#include "socket/Quota.h"
#include "socket/Reactor.h"

namespace android::transport {

/// The end of a connection that this process serves; holds the node for its peer.
class ServerChannel : public EventHandler {
public:
    ServerChannel(const Context& context, Fd socket, sp<BBinder> node, QuotaCharge charge)
        : EventHandler(std::move(socket)),
          mContext(context),
          mNode(std::move(node)),
          mCharge(std::move(charge)) {}

    const Context& context() const { return mContext; }
    const sp<BBinder>& node() const { return mNode; }

    /// Nothing more is read from the peer, and it sees a hang-up, however long queued messages keep
    /// this object.
    void close();
    /// Closes the channel for a message that is malformed or not allowed, with a line in the log.
    void refuse(const char* what, const Envelope& envelope);
    /// False when the kernel does not name the message's sender, whose channel has been closed
    /// then.
    bool accepts(const Envelope& envelope);
    /// For a socket that had no message: true to keep it; false when it has been closed.
    bool survives(Received received, const Envelope& envelope);

private:
    const Context& mContext;
    const sp<BBinder> mNode;
    const QuotaCharge mCharge;
};

}  // namespace android::transport

#endif
