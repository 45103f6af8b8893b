// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SYSCALLS_H
#define VOXTREL_SOCKET_SYSCALLS_H

#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>

/// The system calls of the transport that fail for want of descriptors, memory or room. A test has
/// some of them fail; else each is a direct call behind one look at `gFault`.
namespace android::transport::sys {

enum class Call {
    SocketPair,
    Accept,
    Send,
    Receive,
    ReceiveDescriptors,  ///< the message comes, its descriptors are lost
    Memfd,
    Write,
    Read,
    Timer,
    Epoll,
    EpollAdd,
};

/// A fault that is no error: `Write` takes one byte only.
constexpr int kShort = -1;

/// The errno of the call that is about to be made; 0 to make it.
using Fault = int (*)(Call call);

/// Set by a test: decides on each call, on the thread that makes it. Null: none fails.
inline std::atomic<Fault> gFault{nullptr};

inline int faultOf(Call call) {
    const Fault fault = gFault.load(std::memory_order_relaxed);
    return __builtin_expect(fault != nullptr, 0) != 0 ? fault(call) : 0;
}

inline bool fails(Call call) {
    const int fault = faultOf(call);
    if (fault > 0) {
        errno = fault;
    }
    return fault > 0;
}

inline int socketPair(int* ends) {
    return fails(Call::SocketPair) ? -1
                                   : ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends);
}

inline int accept(int listening) {
    return fails(Call::Accept) ? -1 : ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
}

inline ssize_t send(int fd, const void* bytes, size_t size, int flags) {
    return fails(Call::Send) ? -1 : ::send(fd, bytes, size, flags);
}

inline ssize_t send(int fd, const msghdr* message, int flags) {
    return fails(Call::Send) ? -1 : ::sendmsg(fd, message, flags);
}

inline ssize_t receive(int fd, void* room, size_t size, int flags) {
    return fails(Call::Receive) ? -1 : ::recv(fd, room, size, flags);
}

inline ssize_t receive(int fd, msghdr* message, int flags) {
    if (faultOf(Call::ReceiveDescriptors) != 0) {
        message->msg_controllen = CMSG_SPACE(sizeof(ucred));
    }
    return fails(Call::Receive) ? -1 : ::recvmsg(fd, message, flags);
}

inline int makeMemfd() {
    return fails(Call::Memfd) ? -1 : ::memfd_create("binder", MFD_CLOEXEC | MFD_ALLOW_SEALING);
}

inline ssize_t write(int fd, const void* bytes, size_t size) {
    const int fault = faultOf(Call::Write);
    if (fault > 0) {
        errno = fault;
        return -1;
    }
    return ::write(fd, bytes, fault == kShort ? std::min<size_t>(size, 1) : size);
}

inline ssize_t read(int fd, void* room, size_t size, off_t from) {
    return fails(Call::Read) ? -1 : ::pread(fd, room, size, from);
}

inline int makeTimer() {
    return fails(Call::Timer) ? -1 : ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
}

inline int makeEpoll() {
    return fails(Call::Epoll) ? -1 : ::epoll_create1(EPOLL_CLOEXEC);
}

inline int epollControl(int epoll, int operation, int fd, epoll_event* event) {
    return operation == EPOLL_CTL_ADD && fails(Call::EpollAdd)
               ? -1
               : ::epoll_ctl(epoll, operation, fd, event);
}

}  // namespace android::transport::sys

#endif
