// SPDX-License-Identifier: Apache-2.0
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>

#include "binder/transport/Message.h"

namespace android::transport {

namespace {

int socketOption(int fd, int option) {
    int value = -1;
    socklen_t size = sizeof(value);
    return getsockopt(fd, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

}  // namespace

SocketPair makeSocketPair() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        return {};
    }
    SocketPair pair{Fd(ends[0]), Fd(ends[1])};
    const int on = 1;
    if (setsockopt(pair.served.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) != 0) {
        return {};
    }
    return pair;
}

bool isPeerSocket(const Fd& fd) {
    return socketOption(fd.get(), SO_DOMAIN) == AF_UNIX &&
           socketOption(fd.get(), SO_TYPE) == SOCK_SEQPACKET;
}

pid_t peerPid(const Fd& fd) {
    ucred peer = {};
    socklen_t size = sizeof(peer);
    return getsockopt(fd.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

bool hasHungUp(const Fd& fd) {
    return hangsUpWithin(fd, 0);
}

bool hangsUpWithin(const Fd& fd, int patienceMs) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(patienceMs);
    pollfd request = {fd.get(), POLLRDHUP, 0};
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        const int ready = poll(&request, 1, left > 0 ? static_cast<int>(left) : 0);
        if (ready >= 0 || errno != EINTR) {
            return ready > 0;
        }
    }
}

}  // namespace android::transport
