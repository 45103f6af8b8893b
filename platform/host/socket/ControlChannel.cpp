// SPDX-License-Identifier: Apache-2.0
#include "socket/ControlChannel.h"

#include <sys/socket.h>
#include <sys/time.h>

#include "socket/ThreadPool.h"
#include "support/Log.h"

namespace android::transport {

namespace {

// How long a thread that has served a socket sleeps on it for more.
constexpr suseconds_t kStayMicroseconds = 5000;

// Only on a socket for calls does a thread wait.
bool prepare(const Fd& socket, Role role) {
    const timeval stay = {0, kStayMicroseconds};
    return isPeerSocket(socket) &&
           (role != Role::Calls ||
            setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &stay, sizeof(stay)) == 0);
}

}  // namespace

// One message, and back to the reactor: one peer must not keep the thread.
void ControlChannel::onReady() {
    Parcel empty;
    Envelope envelope;
    const Received received = receiveMessage(socket(), false, empty, envelope);
    const Next next = check(received, envelope);
    std::shared_ptr<EventHandler> calls;
    if (next == Next::Closed || (next == Next::Serve && !adopt(received, envelope, &calls))) {
        context().pool.keepOneWaiting();  // the node may go with its last control socket
        return;
    }
    context().reactor.rearm(*this);
    if (calls != nullptr) {
        context().pool.keepOneWaiting();
        context().pool.serve(*calls);
    }
}

std::shared_ptr<EventHandler> ControlChannel::makeChannel(Role role, Fd socket,
                                                          QuotaCharge charge) const {
    if (role == Role::Control) {
        return std::make_shared<ControlChannel>(context(), std::move(socket), node(),
                                                std::move(charge));
    }
    return std::make_shared<CallChannel>(context(), std::move(socket), node(), std::move(charge),
                                         mShared);
}

bool ControlChannel::adopt(Received received, Envelope& envelope,
                           std::shared_ptr<EventHandler>* calls) {
    if (received == Received::OutOfDescriptors) {
        context().pool.keepOneWaiting();  // writing to the log may block
        logLimited(
            "out of file descriptors: a connection of process %d is refused, and with it what "
            "has been sent through it",
            static_cast<int>(envelope.senderPid()));
        return true;
    }
    Fd end = envelope.header().kind == Kind::Adopt ? envelope.takeFd(0) : Fd();
    const auto role = static_cast<Role>(envelope.header().code);
    if (!end.valid() || !prepare(end, role)) {
        refuse("a message out of place", envelope);
        return false;
    }
    const PeerIdentity peer = context().quotas.chargedPeer(
        {envelope.senderPid(), envelope.senderUid()}, holderOf(envelope.header()));
    QuotaCharge charge(context().quotas, peer, end.get());
    if (!charge.granted()) {
        context().pool.keepOneWaiting();
        logLimited(
            "process %d or its user has too many connections: another one is refused, and "
            "with it what has been sent through it",
            static_cast<int>(peer.pid));
        return true;
    }
    const auto channel = makeChannel(role, std::move(end), std::move(charge));
    if (role == Role::Calls && context().pool.isServing()) {
        context().reactor.addPaused(channel);
        *calls = channel;
        return true;
    }
    // When that fails the channel goes, and its peer sees a hang-up.
    (void)context().reactor.add(channel);
    return true;
}

}  // namespace android::transport
