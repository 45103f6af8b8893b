// SPDX-License-Identifier: Apache-2.0
#include "socket/ControlChannel.h"

#include <sys/socket.h>
#include <sys/time.h>

#include "socket/OneWayBudget.h"
#include "socket/ThreadPool.h"
#include "support/Log.h"

namespace android::transport {

namespace {

// How long a thread that has served a socket sleeps on it for more.
constexpr suseconds_t kStayMicroseconds = 5000;
// A control socket is read so far at a time: others want the thread, too.
constexpr int kMaxAtOnce = 8;

bool prepare(const Fd& socket) {
    const int on = 1;
    const timeval stay = {0, kStayMicroseconds};
    return isPeerSocket(socket) &&
           setsockopt(socket.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) == 0 &&
           setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &stay, sizeof(stay)) == 0;
}

}  // namespace

void ControlChannel::onReady() {
    for (int i = 0; i < kMaxAtOnce; ++i) {
        Incoming incoming;
        const Received received =
            receiveMessage(socket(), false, incoming.parcel, incoming.envelope);
        if (received == Received::Nothing) {
            break;
        }
        if (!take(received, incoming.envelope)) {
            threadPool().keepOneWaiting();  // the node may go with its last control socket
            return;
        }
    }
    reactor().rearm(*this);
}

bool ControlChannel::take(Received received, Envelope& envelope) {
    if (received == Received::Message) {
        return accepts(envelope) && adopt(envelope);
    }
    if (received != Received::OutOfDescriptors) {
        return survives(received, envelope);
    }
    threadPool().keepOneWaiting();  // whoever reads the log may be slow
    logLimited(
        "out of file descriptors: a connection of process %d is refused, and with it what "
        "has been sent through it",
        static_cast<int>(envelope.senderPid()));
    return accepts(envelope);
}

std::shared_ptr<EventHandler> ControlChannel::makeEnd(Role role, Fd socket,
                                                      QuotaCharge charge) const {
    if (role == Role::Control) {
        return std::make_shared<ControlChannel>(std::move(socket), node(), std::move(charge));
    }
    return std::make_shared<CallChannel>(std::move(socket), node(), std::move(charge), mControl);
}

bool ControlChannel::adopt(Envelope& envelope) {
    Fd end = envelope.header().kind == Kind::Adopt ? envelope.takeFd(0) : Fd();
    if (!end.valid() || !prepare(end)) {
        refuse("a message out of place", envelope);
        return false;
    }
    const auto role = static_cast<Role>(envelope.header().code);
    if (role == Role::Budget) {
        showBudget(end);
        return true;
    }
    const PeerIdentity holder =
        chargedPeer({envelope.senderPid(), envelope.senderUid()}, envelope.header().flags);
    QuotaCharge charge(holder, end.get());
    if (!charge.granted()) {
        threadPool().keepOneWaiting();
        logLimited(
            "process %d or its user has too many connections: another one is refused, and "
            "with it what has been sent through it",
            static_cast<int>(holder.pid));
        return true;
    }
    const auto handler = makeEnd(role, std::move(end), std::move(charge));
    // What cannot be waited for is dropped, and its peer sees it hang up.
    (void)reactor().add(handler);
    return true;
}

}  // namespace android::transport
