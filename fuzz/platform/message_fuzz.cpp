// SPDX-License-Identifier: Apache-2.0
// Any packet, with any number of descriptors of several kinds, through the decoder and through the
// whole of what a received message goes through: payload, memfd, binders, reads; and the same as a
// reply, which is received in another way, announced or not. At times the process may have few
// further descriptors, or none; and it never keeps one.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "binder/Parcel.h"
#include "fuzz/Input.h"
#include "socket/Memfd.h"
#include "socket/Message.h"
#include "socket/SocketRuntime.h"
#include "socket/Wire.h"

namespace {

using android::Parcel;
using namespace android::transport;
using voxtrel_fuzz::require;

const uint8_t kBytes[64] = {};

SocketRuntime& runtime() {
    static auto* const instance = new SocketRuntime();
    return *instance;
}

// The first byte says how many descriptors come along, and of which kind.
std::vector<Fd> descriptors(uint8_t choice) {
    std::vector<Fd> fds;
    for (int i = 0; i < (choice & 0x07); ++i) {
        switch (choice >> 6) {
            case 0:
                fds.push_back(std::move(makeSocketPair().held));
                break;
            case 1:
                fds.emplace_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
                break;
            case 2: {
                Fd memfd(memfd_create("fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING));
                (void)ftruncate(memfd.get(), choice & 0x38);
                (void)fcntl(memfd.get(), F_ADD_SEALS,
                            (choice & 1) != 0 ? F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE : 0);
                fds.push_back(std::move(memfd));
                break;
            }
            default:
                fds.push_back(sealedCopy(kBytes, choice & 0x38));
                break;
        }
    }
    return fds;
}

bool sendRaw(const Fd& socket, const uint8_t* data, size_t size, const std::vector<Fd>& fds) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * 8)] = {};
    iovec part = {const_cast<uint8_t*>(data), size};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (!fds.empty()) {
        message.msg_control = control;
        message.msg_controllen = CMSG_SPACE(sizeof(int) * fds.size());
        cmsghdr* header = CMSG_FIRSTHDR(&message);
        header->cmsg_len = CMSG_LEN(sizeof(int) * fds.size());
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        for (size_t i = 0; i < fds.size(); ++i) {
            const int fd = fds[i].get();
            std::memcpy(CMSG_DATA(header) + i * sizeof(int), &fd, sizeof(fd));
        }
    }
    return sendmsg(socket.get(), &message, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0;
}

// What an implementation might read; nothing of it may go wrong.
void readEverything(const Parcel& parcel) {
    while (parcel.dataAvail() >= 4) {
        (void)parcel.readStrongBinder();
        (void)parcel.readString16();
        (void)parcel.readCString();
        (void)parcel.readInt32();
    }
}

int lowestFree() {
    const Fd probe(fcntl(STDIN_FILENO, F_DUPFD, 0));
    return probe.get();
}

// Lets the process open so many further descriptors at most.
class Scarcity {
public:
    explicit Scarcity(unsigned left) {
        getrlimit(RLIMIT_NOFILE, &mLimit);
        rlimit few = mLimit;
        few.rlim_cur = static_cast<rlim_t>(lowestFree()) + left;
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~Scarcity() { setrlimit(RLIMIT_NOFILE, &mLimit); }
    Scarcity(const Scarcity&) = delete;
    Scarcity& operator=(const Scarcity&) = delete;

private:
    rlimit mLimit{};
};

Received receiveShort(const Fd& socket, unsigned left, Parcel& parcel, Envelope& envelope) {
    // No longer than that: the sanitizers open descriptors, too.
    const Scarcity scarcity(left);
    return receiveMessage(socket, false, parcel, envelope);
}

// Of a packet that was accepted: its binders stand in its payload, one behind the other.
void requireSound(const uint8_t* data, size_t size, const Layout& layout) {
    require(layout.records + layout.header.objectCount * sizeof(ObjectRecord) == size);
    uint64_t free = 0;
    for (size_t i = 0; i < layout.header.objectCount; ++i) {
        const uint64_t offset = recordAt(data, layout, i).offset;
        require(offset >= free && offset + kBinderBytes <= layout.header.payloadSize);
        free = offset + kBinderBytes;
    }
}

void run(const uint8_t* data, size_t size, uint8_t choice) {
    const std::vector<Fd> fds = descriptors(choice);
    Layout layout;
    if (decode(data, size, fds.size(), &layout)) {
        requireSound(data, size, layout);
    }
    const SocketPair pair = makeSocketPair();
    if (size == 0 || !sendRaw(pair.held, data, size, fds)) {
        return;
    }
    // These bits mean nothing to a choice of sockets.
    const bool plenty = (choice & 0xE0) != 0x20;
    Parcel parcel;
    Envelope envelope;
    const Received received = plenty
                                  ? receiveMessage(pair.served, false, parcel, envelope)
                                  : receiveShort(pair.served, (choice >> 3) & 3U, parcel, envelope);
    require(received != Received::OutOfDescriptors || (!plenty && envelope.fdCount() == 0));
    if (received == Received::Message && runtime().importBinders(envelope, parcel)) {
        readEverything(parcel);
    }
}

// Behind it the owner has gone, so that its caller does not wait for more.
void runAsReply(const uint8_t* data, size_t size, uint8_t choice, bool announced) {
    constexpr Header announcement = {kMagic, Kind::Reply, 0, 0, 0, 0, 0, kDescriptorsFollow};
    SocketPair pair = makeSocketPair();
    if (announced) {
        (void)sendRaw(pair.served, reinterpret_cast<const uint8_t*>(&announcement),
                      sizeof(announcement), {});
    }
    (void)sendRaw(pair.served, data, size, descriptors(choice));
    pair.served.reset();
    Parcel parcel;
    Envelope envelope;
    const Received received = receiveReply(pair.held, prepareToReceive(), parcel, envelope);
    if (received == Received::Message && runtime().importBinders(envelope, parcel)) {
        readEverything(parcel);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 60000) {
        return 0;
    }
    (void)runtime();  // opens a descriptor of its own once
    const int before = lowestFree();
    run(data + 1, size - 1, data[0]);
    runAsReply(data + 1, size - 1, data[0], false);
    runAsReply(data + 1, size - 1, data[0], true);
    require(lowestFree() == before);
    return 0;
}
