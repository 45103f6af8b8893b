// SPDX-License-Identifier: Apache-2.0
#include <pthread.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "binder/internal/ParcelFrame.h"
#include "socket/Memfd.h"
#include "socket/Message.h"
#include "socket/Shortage.h"
#include "socket/Syscalls.h"

namespace android::transport {

namespace {

static_assert(ParcelFrame::kHeadroom == sizeof(Header), "the header stands in front of the data");

// SCM_PIDFD, which older headers do not name: a descriptor that no message claims.
constexpr int kScmPidfd = 4;

// A plain pointer, freed by a key of the thread: destructors of static objects, which run after
// those of thread_local ones, make calls, too.
thread_local uint8_t* gOverflowRoom = nullptr;

void freeOverflowRoom(void* room) {
    gOverflowRoom = nullptr;
    delete[] static_cast<uint8_t*>(room);
}

// What does not fit into a parcel's own room lands here first, once a thread.
uint8_t* overflowRoom() {
    if (gOverflowRoom == nullptr) {
        static const pthread_key_t atThreadEnd = [] {
            pthread_key_t key{};
            (void)pthread_key_create(&key, &freeOverflowRoom);  // a leak of 64 KiB a thread, else
            return key;
        }();
        gOverflowRoom = new uint8_t[kLargestPacket];
        (void)pthread_setspecific(atThreadEnd, gOverflowRoom);
    }
    return gOverflowRoom;
}

// `attempt` makes the system call. After a reset, for replies left unread, what the peer sent is
// still there, and so it is where there is no memory to take it.
template <typename Attempt>
ssize_t attemptToReceive(Attempt attempt) {
    ssize_t got = attempt();
    for (Shortage shortage;
         got < 0 && (errno == EINTR || errno == ECONNRESET || shortage.mayPass());) {
        got = attempt();
    }
    return got;
}

}  // namespace

Fd Envelope::takeFd(size_t index) {
    return Fd(std::exchange(mFds[mFirstFd + index], -1));
}

int Envelope::highestFd() const {
    return mFdCount != 0 ? *std::max_element(mFds, mFds + mFdCount) : -1;
}

void Envelope::closeFds() {
    for (size_t i = 0; i < mFdCount; ++i) {
        const Fd closed(mFds[i]);
    }
    mFdCount = 0;
}

// Fills one envelope and one parcel from one packet.
class Receiver {
public:
    Receiver(Parcel& parcel, Envelope& envelope) : mFrame(parcel), mEnvelope(envelope) {}

    // Without the control part, which costs more than all else of receiving a small packet.
    Received runPlain(const Fd& socket, uint8_t* packet) {
        const ssize_t got = attemptToReceive(
            [&] { return sys::receive(socket.get(), packet, kLargestPacket, MSG_TRUNC); });
        if (got <= 0) {
            return got < 0 ? whyNot() : Received::HungUp;
        }
        const auto size = static_cast<size_t>(got);
        Layout layout;
        if (size > kLargestPacket || !decode(packet, size, 0, &layout)) {
            return Received::Malformed;
        }
        mEnvelope.mHeader = layout.header;
        if (!mFrame.reserve(layout.inlinePayload)) {
            return Received::OutOfMemory;
        }
        std::memcpy(mFrame.block() + sizeof(Header), packet + sizeof(Header), layout.inlinePayload);
        mFrame.setContents(layout.inlinePayload);
        return Received::Message;
    }

    Received run(const Fd& socket, bool wait) {
        mEnvelope.closeFds();
        mParts[0] = {mFrame.block(), ParcelFrame::kOwnRoom};
        mParts[1] = {overflowRoom() + ParcelFrame::kOwnRoom,
                     kLargestPacket - ParcelFrame::kOwnRoom};
        const ssize_t got = take(socket, wait);
        if (got < 0) {
            return whyNot();
        }
        readControl();
        if (got == 0) {
            return mEnvelope.mFdCount == 0 ? Received::HungUp : Received::Malformed;
        }
        // The kernel had no room for descriptors: in this process, or in a packet that brought more
        // than any message may have.
        const bool lost = (mMessage.msg_flags & MSG_CTRUNC) != 0;
        const bool tooMany = lost && mEnvelope.mFdCount >= kMaxFds;
        if (lost) {
            mEnvelope.closeFds();
        }
        if (tooMany || (mMessage.msg_flags & MSG_TRUNC) != 0) {
            return Received::Malformed;
        }
        const Received received = unpack(static_cast<size_t>(got), lost);
        if (received == Received::OutOfMemory) {
            mEnvelope.closeFds();
        }
        return received;
    }

private:
    static Received whyNot() {
        const bool mayCome = errno == EAGAIN || errno == ENOBUFS || errno == ENOMEM;
        return mayCome ? Received::Nothing : Received::HungUp;
    }

    ssize_t take(const Fd& socket, bool wait) {
        const int flags = MSG_CMSG_CLOEXEC | (wait ? 0 : MSG_DONTWAIT);
        return attemptToReceive([&] {
            mMessage = {};
            mMessage.msg_iov = mParts;
            mMessage.msg_iovlen = 2;
            mMessage.msg_control = mControl;
            mMessage.msg_controllen = sizeof(mControl);
            return sys::receive(socket.get(), &mMessage, flags);
        });
    }

    void readControl() {
        mEnvelope.mPid = 0;
        mEnvelope.mUid = static_cast<uid_t>(-1);
        for (cmsghdr* part = CMSG_FIRSTHDR(&mMessage); part != nullptr;
             part = CMSG_NXTHDR(&mMessage, part)) {
            // A peer may have sent a socket of another family, whose protocol numbers its own parts
            // the same way and fills them as the other end likes.
            if (part->cmsg_level == SOL_SOCKET) {
                readPart(*part);
            }
        }
    }

    void readPart(cmsghdr& part) {
        if (part.cmsg_type == SCM_CREDENTIALS) {
            ucred sender;
            std::memcpy(&sender, CMSG_DATA(&part), sizeof(sender));
            mEnvelope.mPid = sender.pid;
            mEnvelope.mUid = sender.uid;
        } else if (part.cmsg_type == SCM_RIGHTS || part.cmsg_type == kScmPidfd) {
            const size_t count = (part.cmsg_len - CMSG_LEN(0)) / sizeof(int);
            for (size_t i = 0; i < count; ++i) {
                int fd = -1;
                std::memcpy(&fd, CMSG_DATA(&part) + i * sizeof(fd), sizeof(fd));
                // Still known as one of the runtime's: a forked child must not keep it.
                mEnvelope.mFds[mEnvelope.mFdCount++] = Fd(fd).release();
            }
        }
    }

    // In one piece, before there is memory for its payload: where there is none, a sound packet is
    // told from a malformed one all the same.
    const uint8_t* wholePacket(size_t size) {
        if (size <= ParcelFrame::kOwnRoom) {
            return mFrame.block();
        }
        std::memcpy(overflowRoom(), mFrame.block(), ParcelFrame::kOwnRoom);
        return overflowRoom();
    }

    Received unpack(size_t size, bool lost) {
        const uint8_t* const packet = wholePacket(size);
        Layout layout;
        if (!decode(packet, size, lost ? kFdsAreLost : mEnvelope.mFdCount, &layout)) {
            return Received::Malformed;
        }
        mEnvelope.mHeader = layout.header;
        if (lost) {
            return Received::OutOfDescriptors;
        }
        for (size_t i = 0; i < layout.header.objectCount; ++i) {
            mEnvelope.mRecords[i] = recordAt(packet, layout, i);
        }
        return fetchPayload(packet, layout);
    }

    Received fetchPayload(const uint8_t* packet, const Layout& layout) {
        const size_t size = layout.header.payloadSize;
        const bool apart = layout.inlinePayload < size;
        mEnvelope.mFirstFd = apart ? 1 : 0;
        if (apart) {
            return fetchApart(packet, layout);
        }
        if (packet != mFrame.block() && !copyPayload(packet, layout)) {
            return Received::OutOfMemory;
        }
        mFrame.setContents(size);
        return Received::Message;
    }

    // The parcel's own room stays what it is where it gets another.
    bool copyPayload(const uint8_t* packet, const Layout& layout) {
        if (!mFrame.reserve(layout.header.payloadSize)) {
            return false;
        }
        if (packet != mFrame.block()) {
            std::memcpy(mFrame.block() + sizeof(Header), packet + sizeof(Header),
                        layout.inlinePayload);
        }
        return true;
    }

    // The rest of the payload is in a memfd.
    Received fetchApart(const uint8_t* packet, const Layout& layout) {
        const Fd memfd(std::exchange(mEnvelope.mFds[0], -1));
        const size_t size = layout.header.payloadSize;
        const size_t rest = size - layout.inlinePayload;
        if (!isSealed(memfd, rest)) {
            return Received::Malformed;
        }
        if (!copyPayload(packet, layout)) {
            return Received::OutOfMemory;
        }
        uint8_t* const out = mFrame.block() + sizeof(Header) + layout.inlinePayload;
        if (!readSealed(memfd, out, rest)) {
            return errno == ENOMEM ? Received::OutOfMemory : Received::Malformed;
        }
        mFrame.setContents(size);
        return Received::Message;
    }

    static constexpr size_t kControlSize =
        CMSG_SPACE(sizeof(ucred)) + CMSG_SPACE(sizeof(int) * kMaxFds);
    static_assert(kControlSize <= CMSG_LEN(sizeof(Envelope::mFds)), "it may be all descriptors");

    ParcelFrame mFrame;
    Envelope& mEnvelope;
    iovec mParts[2];
    msghdr mMessage;
    alignas(cmsghdr) char mControl[kControlSize];
};

uint8_t* prepareToReceive() {
    return overflowRoom();
}

Received receiveMessage(const Fd& socket, bool wait, Parcel& parcel, Envelope& envelope) {
    return Receiver(parcel, envelope).run(socket, wait);
}

Received receiveReply(const Fd& socket, uint8_t* room, Parcel& parcel, Envelope& envelope) {
    Receiver receiver(parcel, envelope);
    const Received first = receiver.runPlain(socket, room);
    if (first != Received::Message || !announcesDescriptors(envelope.header())) {
        return first;
    }
    const Received second = receiver.run(socket, true);
    return second == Received::Message && announcesDescriptors(envelope.header())
               ? Received::Malformed
               : second;
}

}  // namespace android::transport
