// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "socket/Message.h"
#include "socket/Syscalls.h"

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
    if (sys::socketPair(ends) != 0) {
        return {};
    }
    SocketPair pair{Fd(ends[0]), Fd(ends[1])};
    return nameSenders(pair.served) ? std::move(pair) : SocketPair();
}

bool nameSenders(const Fd& fd) {
    const int on = 1;
    return setsockopt(fd.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) == 0;
}

bool isPeerSocket(const Fd& fd) {
    return socketOption(fd.get(), SO_TYPE) == SOCK_SEQPACKET;
}

Fd closedFirst(Fd fd) {
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return fd;
    }
    const auto count = static_cast<int>(std::min<rlim_t>(limit.rlim_cur, Fd::kTracked));
    Fd high(fcntl(fd.get(), F_DUPFD_CLOEXEC, count - count / 16));
    return high.valid() ? std::move(high) : std::move(fd);
}

bool hasHungUp(const Fd& fd) {
    pollfd request = {fd.get(), POLLRDHUP, 0};
    int ready = poll(&request, 1, 0);
    while (ready < 0 && errno == EINTR) {
        ready = poll(&request, 1, 0);
    }
    return ready > 0;
}

}  // namespace android::transport
