// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>
#include <cstring>

#include "binder/internal/ParcelFrame.h"
#include "socket/Memfd.h"
#include "socket/Message.h"
#include "socket/Shortage.h"
#include "socket/Syscalls.h"

namespace android::transport {

namespace {

constexpr int kSendFlags = MSG_DONTWAIT | MSG_NOSIGNAL;

status_t statusOf(int error) {
    switch (error) {
        case EAGAIN:
            return WOULD_BLOCK;
        case EPIPE:
        case ECONNRESET:
        case ENOTCONN:
            return DEAD_OBJECT;
        default:
            return FAILED_TRANSACTION;
    }
}

// `attempt` makes the system call. A message is not given up for a short while without memory:
// proxies of interfaces drop the status of a call, so that one that has failed may be taken for
// done.
template <typename Attempt>
status_t attemptOnce(Attempt attempt) {
    ssize_t sent = attempt();
    for (Shortage shortage; sent < 0 && (errno == EINTR || shortage.mayPass());) {
        sent = attempt();
    }
    return sent >= 0 ? static_cast<status_t>(OK) : statusOf(errno);
}

status_t sendParts(const Fd& socket, iovec* parts, size_t count, const int* fds, size_t fdCount) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * kMaxFds)];
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = count;
    if (fdCount != 0) {
        const size_t bytes = fdCount * sizeof(int);
        const cmsghdr header = {CMSG_LEN(bytes), SOL_SOCKET, SCM_RIGHTS};
        std::memcpy(control, &header, sizeof(header));
        std::memcpy(control + CMSG_LEN(0), fds, bytes);
        message.msg_control = control;
        message.msg_controllen = CMSG_SPACE(bytes);
    }
    return attemptOnce([&] { return sys::send(socket.get(), &message, kSendFlags); });
}

// A copy and a call with one part cost less than a call with two, for what usually is sent.
status_t sendSmall(const Fd& socket, const Header& header, const Parcel& parcel) {
    uint8_t packet[ParcelFrame::kOwnRoom];
    std::memcpy(packet, &header, sizeof(header));
    std::memcpy(packet + sizeof(header), parcel.data(), header.payloadSize);
    const size_t size = sizeof(header) + header.payloadSize;
    return attemptOnce([&] { return sys::send(socket.get(), packet, size, kSendFlags); });
}

// For sending only; the type has no const.
iovec partOf(const void* bytes, size_t size) {
    return {const_cast<void*>(bytes), size};
}

status_t announceDescriptors(const Fd& socket) {
    const Header header = {kMagic, Kind::Reply, 0, 0, 0, 0, 0, kDescriptorsFollow};
    return attemptOnce(
        [&] { return sys::send(socket.get(), &header, sizeof(header), kSendFlags); });
}

status_t sendLarge(const Fd& socket, Header header, const Parcel& parcel,
                   const Attachments& attachments) {
    const size_t recordBytes = attachments.records.size() * sizeof(ObjectRecord);
    const bool apart = sizeof(Header) + header.payloadSize + recordBytes > kLargestPacket;
    const size_t inPacket = apart ? kInlineWithMemfd : header.payloadSize;
    Fd memfd;
    if (apart) {
        memfd = sealedCopy(parcel.data() + inPacket, header.payloadSize - inPacket);
        if (!memfd.valid()) {
            return FAILED_TRANSACTION;
        }
        header.options |= kPayloadInMemfd;
    }

    int fds[kMaxFds];
    size_t fdCount = 0;
    if (apart) {
        fds[fdCount++] = memfd.get();
    }
    for (const Fd& fd : attachments.fds) {
        fds[fdCount++] = fd.get();
    }
    if (fdCount != 0 && header.kind == Kind::Reply) {
        const status_t announced = announceDescriptors(socket);
        if (announced != OK) {
            return announced;
        }
    }
    iovec parts[3] = {
        partOf(&header, sizeof(header)),
        partOf(parcel.data(), inPacket),
        partOf(attachments.records.data(), recordBytes),
    };
    return sendParts(socket, parts, 3, fds, fdCount);
}

}  // namespace

status_t sendMessage(const Fd& socket, Header header, const Parcel& parcel,
                     const Attachments& attachments) {
    const size_t size = parcel.dataSize();
    if (size > largestPayload(header.kind) || attachments.records.size() > kMaxObjects) {
        return FAILED_TRANSACTION;
    }
    header.magic = kMagic;
    header.payloadSize = static_cast<uint32_t>(size);
    header.objectCount = static_cast<uint32_t>(attachments.records.size());
    const bool small =
        attachments.records.empty() && sizeof(header) + size <= ParcelFrame::kOwnRoom;
    return small ? sendSmall(socket, header, parcel)
                 : sendLarge(socket, header, parcel, attachments);
}

status_t sendAdopt(const Fd& socket, Role role, const Fd& end, const PeerIdentity& holder) {
    Header header = {kMagic,
                     Kind::Adopt,
                     static_cast<uint32_t>(role),
                     static_cast<int32_t>(holder.uid),
                     static_cast<uint32_t>(holder.pid),
                     0,
                     0,
                     0};
    iovec part = {&header, sizeof(header)};
    const int fd = end.get();
    return sendParts(socket, &part, 1, &fd, 1);
}

}  // namespace android::transport
