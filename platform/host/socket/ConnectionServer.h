// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_CONNECTIONSERVER_H
#define VOXTREL_SOCKET_CONNECTIONSERVER_H

#include <memory>

#include "socket/CallChannel.h"
#include "socket/Incoming.h"
#include "socket/OneWayQueue.h"

namespace android::transport {

/// What one thread does at one channel, from the event that woke it until it goes back to the
/// reactor: it serves the call and answers, and then sleeps on the socket itself for a while, so
/// that a busy caller is served with one receive and one send a call.
class ConnectionServer {
public:
    explicit ConnectionServer(std::shared_ptr<CallChannel> channel);
    ~ConnectionServer();
    ConnectionServer(const ConnectionServer&) = delete;
    ConnectionServer& operator=(const ConnectionServer&) = delete;

    void run();

private:
    enum class After {
        ReadOn,  ///< this thread reads the channel on
        Left,    ///< another thread does, or it has been closed
    };
    Received receive();
    After handle(Received received);
    After serveOne();
    After serveTwoWay();
    [[gnu::cold]] After overtake();
    After failLost();
    After enterOneWay();
    /// False when this socket has been closed for what came over it.
    bool serveQueue();
    bool serveOneWayFrom(CallChannel& channel, Incoming& message);
    bool mayStay();
    After refuse(const char* what);

    const std::shared_ptr<CallChannel> mChannel;
    const Context& mContext;
    std::unique_ptr<Incoming> mMessage;
    OneWayQueue& mQueue;
    const bool mWatched;
    bool mStaying = false;
};

/// A channel whose calls are served by a `ConnectionServer` on the thread that is woken.
std::shared_ptr<CallChannel> makeCallChannel(const Context& context, Fd socket,
                                             const sp<BBinder>& node, QuotaCharge charge,
                                             std::shared_ptr<CallChannel::Shared> shared);

}  // namespace android::transport

#endif
