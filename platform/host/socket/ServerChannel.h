// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SERVERCHANNEL_H
#define VOXTREL_SOCKET_SERVERCHANNEL_H

#include "binder/Binder.h"
#include "socket/Context.h"
#include "socket/Message.h"
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
    enum class Next {
        Serve,   ///< there is a message, or the header of one whose contents are lost
        Wait,    ///< there is none
        Closed,  ///< the channel has been closed, by the peer or for what it has sent
    };
    Next check(Received received, const Envelope& envelope);

private:
    const Context& mContext;
    const sp<BBinder> mNode;
    const QuotaCharge mCharge;
};

}  // namespace android::transport

#endif
