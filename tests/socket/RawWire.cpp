// SPDX-License-Identifier: Apache-2.0
#include "tests/socket/RawWire.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <utility>

namespace raw {

namespace {

constexpr int kSendTimeoutMs = 60000;

void append(Bytes& bytes, const void* what, size_t size) {
    const size_t before = bytes.size();
    bytes.resize(before + size);
    std::memcpy(bytes.data() + before, what, size);
}

// The reply itself, with its descriptors, follows this packet.
bool announcesDescriptors(const Bytes& packet) {
    constexpr size_t kOptions = 28;
    return packet.size() == 32 && packet[4] == kReply && packet[kOptions] == 4;
}

}  // namespace

Bytes packet(const Words& words, const Bytes& rest) {
    const uint32_t all[8] = {words.magic, words.kind,        words.code,    0,
                             words.flags, words.payloadSize, words.objects, words.options};
    Bytes bytes;
    append(bytes, all, sizeof(all));
    std::memcpy(bytes.data() + 12, &words.status, sizeof(words.status));
    return joined(bytes, rest);
}

Bytes record(uint32_t offset, uint64_t id, uint32_t reserved) {
    Bytes bytes;
    append(bytes, &offset, sizeof(offset));
    append(bytes, &reserved, sizeof(reserved));
    append(bytes, &id, sizeof(id));
    append(bytes, &id, sizeof(id));
    return bytes;
}

Bytes joined(const Bytes& a, const Bytes& b) {
    Bytes both = a;
    both.insert(both.end(), b.begin(), b.end());
    return both;
}

Fd::~Fd() {
    if (mFd >= 0) {
        close(mFd);
    }
}

Fd::Fd(Fd&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}

Fd connectTo(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    if (connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        return Fd(-1);
    }
    return socket;
}

bool send(int socket, const Bytes& bytes, const std::vector<int>& fds) {
    std::vector<char> control(CMSG_SPACE(sizeof(int) * fds.size()));
    iovec part = {const_cast<uint8_t*>(bytes.data()), bytes.size()};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (!fds.empty()) {
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        cmsghdr* header = CMSG_FIRSTHDR(&message);
        header->cmsg_len = CMSG_LEN(sizeof(int) * fds.size());
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        std::memcpy(CMSG_DATA(header), fds.data(), sizeof(int) * fds.size());
    }
    return sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
}

Fd openCalls(int control) {
    int ends[2] = {-1, -1};
    const int on = 1;
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        return Fd(-1);
    }
    setsockopt(ends[0], SOL_SOCKET, SO_PASSCRED, &on, sizeof(on));
    const Fd served(ends[0]);
    Words words;
    words.kind = kAdopt;
    words.code = kCalls;
    (void)send(control, packet(words), {served.get()});
    return Fd(ends[1]);
}

Bytes receivePacket(int socket) {
    pollfd request = {socket, POLLIN, 0};
    Bytes bytes(65536);
    if (poll(&request, 1, kSendTimeoutMs) <= 0) {
        return {};
    }
    const ssize_t got = recv(socket, bytes.data(), bytes.size(), 0);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return bytes;
}

Bytes receive(int socket) {
    const Bytes first = receivePacket(socket);
    return announcesDescriptors(first) ? receivePacket(socket) : first;
}

Fd receiveFd(int socket) {
    char bytes[65536];
    alignas(cmsghdr) char control[1024];
    iovec part = {bytes, sizeof(bytes)};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    pollfd request = {socket, POLLIN, 0};
    int fd = -1;
    ssize_t got = 0;
    if (poll(&request, 1, kSendTimeoutMs) > 0 &&
        (got = recvmsg(socket, &message, MSG_CMSG_CLOEXEC)) > 0) {
        if (announcesDescriptors(Bytes(bytes, bytes + got))) {
            return receiveFd(socket);
        }
        for (cmsghdr* one = CMSG_FIRSTHDR(&message); one != nullptr;
             one = CMSG_NXTHDR(&message, one)) {
            if (one->cmsg_type == SCM_RIGHTS) {
                std::memcpy(&fd, CMSG_DATA(one), sizeof(fd));
            }
        }
    }
    return Fd(fd);
}

Pair makePair() {
    int ends[2] = {-1, -1};
    (void)socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends);
    return {Fd(ends[0]), Fd(ends[1])};
}

namespace {

/// As `Parcel::writeString16`.
Bytes string16(const std::string& name) {
    Bytes bytes;
    const auto units = static_cast<uint32_t>(name.size());
    append(bytes, &units, sizeof(units));
    for (const char letter : name) {
        bytes.push_back(static_cast<uint8_t>(letter));
        bytes.push_back(0);
    }
    bytes.resize((bytes.size() + 2 + 3) / 4 * 4);
    return bytes;
}

}  // namespace

Bytes managerRequest(const std::string& name) {
    const Bytes strictMode(4);
    return joined(joined(strictMode, string16("android.os.IServiceManager")), string16(name));
}

Fd controlOf(int manager, const std::string& name) {
    const Fd asking = openCalls(manager);
    const Bytes payload = managerRequest(name);
    Words words;
    words.code = 1;
    words.payloadSize = static_cast<uint32_t>(payload.size());
    (void)send(asking.get(), packet(words, payload));
    return receiveFd(asking.get());
}

int32_t statusOf(const Bytes& reply) {
    int32_t status = 0;
    if (reply.size() >= 32) {
        std::memcpy(&status, reply.data() + 12, sizeof(status));
    }
    return status;
}

bool hangsUp(int socket) {
    pollfd request = {socket, POLLRDHUP, 0};
    return poll(&request, 1, kSendTimeoutMs) == 1;
}

}  // namespace raw
