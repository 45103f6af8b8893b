// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_CONNECTIONSERVER_H
#define VOXTREL_SOCKET_CONNECTIONSERVER_H

#include <atomic>
#include <memory>

#include "socket/CallChannel.h"
#include "socket/Incoming.h"
#include "socket/OneWayQueue.h"

namespace android::transport {

/// One thread's stretch of work at one socket, from the event that brought it there until it goes
/// back to the reactor.
class ConnectionServer {
public:
    explicit ConnectionServer(std::shared_ptr<CallChannel> end);
    ~ConnectionServer();
    ConnectionServer(const ConnectionServer&) = delete;
    ConnectionServer& operator=(const ConnectionServer&) = delete;

    void run();

private:
    enum class After {
        ReadOn,  ///< the socket is still this thread's
        Left,    ///< somebody else reads it now, or nobody any more
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
    static bool serveOneWayFrom(CallChannel& end, Incoming& message);
    bool mayStay();
    After refuse(const char* what);

    const std::shared_ptr<CallChannel> mEnd;
    std::unique_ptr<Incoming> mMessage;
    OneWayQueue& mQueue;
    // Odd while this thread sleeps on the socket.
    std::atomic<uint32_t> mSleeps{0};
    const bool mWatched;
    bool mStaying = false;
};

}  // namespace android::transport

#endif
