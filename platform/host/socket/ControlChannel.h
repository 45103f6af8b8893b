// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_CONTROLCHANNEL_H
#define VOXTREL_SOCKET_CONTROLCHANNEL_H

#include <memory>

#include "socket/CallChannel.h"

namespace android::transport {

/// The served end of a reference. Its peer sends further sockets through it that are to be served
/// for the same node.
class ControlChannel final : public ServerChannel {
public:
    using ServerChannel::ServerChannel;
    void onReady() override;
    bool neverBlocks() const override { return true; }

private:
    std::shared_ptr<EventHandler> makeChannel(Role role, Fd socket, QuotaCharge charge) const;

    /// False when the message is none that may come through a control socket, which is closed then.
    /// `calls`: a new channel for this thread to look at, since its first call mostly is there.
    bool adopt(Received received, Envelope& envelope, std::shared_ptr<EventHandler>* calls);

    const std::shared_ptr<CallChannel::Shared> mShared = std::make_shared<CallChannel::Shared>();
};

}  // namespace android::transport

#endif
