// SPDX-License-Identifier: Apache-2.0
#include "bench/support/RawPeer.h"

#include <linux/sockios.h>
#include <sched.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/support/Timing.h"

namespace bench {

namespace {

constexpr size_t kHeaderSize = 32;
constexpr size_t kRoom = 65536;
char gRoom[kRoom];

[[noreturn]] void echo(int socket) {
    for (;;) {
        const ssize_t got = recv(socket, gRoom, sizeof(gRoom), 0);
        if (got <= 0 || send(socket, gRoom, static_cast<size_t>(got), MSG_NOSIGNAL) < 0) {
            _exit(0);
        }
    }
}

ssize_t receiveWithSender(int socket) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
    iovec part = {gRoom, sizeof(gRoom)};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    return recvmsg(socket, &message, 0);
}

[[noreturn]] void sink(int socket) {
    while (receiveWithSender(socket) > 0) {
    }
    _exit(0);
}

[[noreturn]] void echoToSender(int socket) {
    for (;;) {
        const ssize_t got = receiveWithSender(socket);
        if (got <= 0 || send(socket, gRoom, static_cast<size_t>(got), MSG_NOSIGNAL) < 0) {
            _exit(0);
        }
    }
}

[[noreturn]] void serve(RawPeer::Kind kind, int socket) {
    switch (kind) {
        case RawPeer::Kind::Echo:
            echo(socket);
        case RawPeer::Kind::EchoToSender:
            echoToSender(socket);
        case RawPeer::Kind::Sink:
            sink(socket);
    }
    _exit(1);
}

}  // namespace

RawPeer::RawPeer(Kind kind) {
    int ends[2];
    const int on = 1;
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        std::perror("socketpair");
        std::exit(1);
    }
    if (kind != Kind::Echo) {
        setsockopt(ends[1], SOL_SOCKET, SO_PASSCRED, &on, sizeof(on));
    }
    mPid = fork();
    if (mPid == 0) {
        close(ends[0]);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        serve(kind, ends[1]);
    }
    close(ends[1]);
    mSocket = ends[0];
}

RawPeer::~RawPeer() {
    kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
    close(mSocket);
}

void RawPeer::call(size_t size) {
    if (send(mSocket, gRoom, size, MSG_NOSIGNAL) < 0 || recv(mSocket, gRoom, kRoom, 0) < 0) {
        std::perror("raw call");
        std::exit(1);
    }
}

double RawPeer::roundTrip() {
    constexpr int kCalls = 500;
    return wallTime(kCalls, [this] { call(64); });
}

void RawPeer::sendOneWay(size_t size) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
    const cmsghdr header = {CMSG_LEN(sizeof(ucred)), SOL_SOCKET, SCM_CREDENTIALS};
    const ucred self = {getpid(), getuid(), getgid()};
    std::memcpy(control, &header, sizeof(header));
    std::memcpy(control + CMSG_LEN(0), &self, sizeof(self));
    iovec parts[2] = {{gRoom, kHeaderSize}, {gRoom + kHeaderSize, size}};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    if (sendmsg(mSocket, &message, MSG_NOSIGNAL) < 0) {
        std::perror("raw one-way");
        std::exit(1);
    }
}

void RawPeer::drain() {
    int left = 1;
    while (ioctl(mSocket, SIOCOUTQ, &left) == 0 && left > 0) {
        sched_yield();
    }
}

}  // namespace bench
