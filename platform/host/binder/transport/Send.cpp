// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>
#include <cstring>

#include "binder/transport/Memfd.h"
#include "binder/transport/Message.h"
#include "binder/transport/ParcelFrame.h"

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

// `attempt` makes the system call.
template <typename Attempt>
status_t attemptOnce(Attempt attempt) {
    ssize_t sent = attempt();
    while (sent < 0 && errno == EINTR) {
        sent = attempt();
    }
    return sent >= 0 ? static_cast<status_t>(OK) : statusOf(errno);
}

struct Control {
    alignas(cmsghdr) char bytes[CMSG_SPACE(sizeof(int) * kMostFds)];
    size_t size = 0;

    void add(size_t index, int fd) {
        std::memcpy(bytes + CMSG_LEN(0) + index * sizeof(int), &fd, sizeof(fd));
    }

    void finish(size_t count) {
        const cmsghdr header = {CMSG_LEN(count * sizeof(int)), SOL_SOCKET, SCM_RIGHTS};
        std::memcpy(bytes, &header, sizeof(header));
        size = count != 0 ? CMSG_SPACE(count * sizeof(int)) : 0;
    }
};

status_t sendParts(const Fd& socket, iovec* parts, size_t count, Control& control) {
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = count;
    message.msg_control = control.size != 0 ? control.bytes : nullptr;
    message.msg_controllen = control.size;
    return attemptOnce([&] { return sendmsg(socket.get(), &message, kSendFlags); });
}

status_t sendWithAttachments(const Fd& socket, Header header, uint8_t* block,
                             const Attachments& attachments) {
    const size_t recordBytes = attachments.records.size() * sizeof(ObjectRecord);
    const bool inPacket = sizeof(Header) + header.payloadSize + recordBytes <= kLargestPacket;
    Fd memfd;
    if (!inPacket) {
        memfd = sealedCopy(block + sizeof(Header), header.payloadSize);
        if (!memfd.valid()) {
            return FAILED_TRANSACTION;
        }
        header.options |= kPayloadInMemfd;
    }
    std::memcpy(block, &header, sizeof(header));

    Control control;
    size_t fds = 0;
    if (memfd.valid()) {
        control.add(fds++, memfd.get());
    }
    for (const Fd& fd : attachments.fds) {
        control.add(fds++, fd.get());
    }
    control.finish(fds);
    iovec parts[2] = {
        {block, sizeof(Header) + (inPacket ? header.payloadSize : 0)},
        {const_cast<ObjectRecord*>(attachments.records.data()), recordBytes},
    };
    return sendParts(socket, parts, recordBytes != 0 ? 2 : 1, control);
}

}  // namespace

status_t sendMessage(const Fd& socket, Header header, const Parcel& parcel,
                     const Attachments& attachments) {
    const size_t size = parcel.dataSize();
    if (size > largestPayload(header.kind) || attachments.records.size() > kMostObjects) {
        return FAILED_TRANSACTION;
    }
    header.magic = kMagic;
    header.payloadSize = static_cast<uint32_t>(size);
    header.objectCount = static_cast<uint32_t>(attachments.records.size());
    uint8_t* block = ParcelFrame(parcel).block();
    const size_t packet = sizeof(header) + size;
    if (!attachments.records.empty() || packet > kLargestPacket) {
        return sendWithAttachments(socket, header, block, attachments);
    }
    std::memcpy(block, &header, sizeof(header));
    return attemptOnce([&] { return send(socket.get(), block, packet, kSendFlags); });
}

status_t sendAdopt(const Fd& socket, Role role, const Fd& end, pid_t holder) {
    Header header = {
        kMagic, Kind::Adopt, static_cast<uint32_t>(role), 0, static_cast<uint32_t>(holder), 0, 0,
        0};
    Control control;
    control.add(0, end.get());
    control.finish(1);
    iovec part = {&header, sizeof(header)};
    return sendParts(socket, &part, 1, control);
}

}  // namespace android::transport
