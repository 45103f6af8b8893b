// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_MESSAGE_H
#define VOXTREL_SOCKET_MESSAGE_H

#include <sys/types.h>

#include <vector>

#include "binder/Parcel.h"
#include "socket/PeerIdentity.h"
#include "socket/Wire.h"
#include "support/Fd.h"

namespace android::transport {

/// The two ends of a new connection; `served` tells the kernel to name each sender.
struct SocketPair {
    Fd served;
    Fd held;
};
/// Both invalid when the process is out of descriptors.
SocketPair makeSocketPair();

/// From here on the kernel names the sender of each message that comes. False when it cannot.
bool nameSenders(const Fd& fd);
/// Is this a SOCK_SEQPACKET socket? Anything may arrive in a message. It need not be a local one:
/// what comes over another has no sender, and is refused.
bool isPeerSocket(const Fd& fd);
/// The same socket under one of the highest numbers that this process may have, or as it was when
/// none is free. The kernel closes a dying process's descriptors from the highest number down: the
/// other end of this one hears of the death first.
Fd closedFirst(Fd fd);

/// Has the other side closed the socket for good?
bool hasHungUp(const Fd& fd);

/// What travels beside a parcel's bytes: a record and a descriptor for each binder in it.
struct Attachments {
    std::vector<ObjectRecord> records;
    std::vector<Fd> fds;
};

/// Sends `parcel` behind `header`, whose sizes and options are filled in here; does not wait. `OK`;
/// `DEAD_OBJECT` when nobody is left at the other end; `WOULD_BLOCK` when there is no room now;
/// `FAILED_TRANSACTION` when it is too large.
status_t sendMessage(const Fd& socket, Header header, const Parcel& parcel,
                     const Attachments& attachments);
/// Sends `end`, to be served at the other side; the same results. `holder`: the process that is to
/// have the other end of it, when the sender knows.
status_t sendAdopt(const Fd& socket, Role role, const Fd& end, const PeerIdentity& holder = {});

/// Whom an adopt names by that; the pid 0 for nobody.
inline PeerIdentity holderOf(const Header& adopt) {
    return {static_cast<pid_t>(adopt.flags), static_cast<uid_t>(adopt.status)};
}

/// Everything about a received message but its payload. Closes the descriptors nobody took.
class Envelope {
public:
    Envelope() = default;  // NOLINT: filled by receiveMessage
    ~Envelope() { closeFds(); }
    Envelope(const Envelope&) = delete;
    Envelope& operator=(const Envelope&) = delete;

    const Header& header() const { return mHeader; }
    pid_t senderPid() const { return mPid; }
    uid_t senderUid() const { return mUid; }
    const ObjectRecord& record(size_t index) const { return mRecords[index]; }
    size_t fdCount() const { return mFdCount; }
    /// -1 without any.
    int highestFd() const;
    /// The descriptor of the binder `index`, or of an Adopt (0).
    Fd takeFd(size_t index);

private:
    friend class Receiver;
    void closeFds();

    Header mHeader;
    pid_t mPid;
    uid_t mUid;
    size_t mFirstFd;  // of the binders: a memfd comes before them
    size_t mFdCount = 0;
    // Each released by an `Fd`; more than a message may have find room in its control part.
    int mFds[kMaxFds + 16];
    ObjectRecord mRecords[kMaxObjects];
};

enum class Received {
    Message,
    Nothing,
    HungUp,
    Malformed,
    /// A sound message whose descriptors were lost, since this process may have no more: only its
    /// header is there.
    OutOfDescriptors,
    /// A sound message whose payload there is no memory for: the same.
    OutOfMemory,
};

/// The calling thread's room for a packet. Whoever sends what will be answered asks for it first:
/// memory that runs out (`std::bad_alloc`) then leaves nothing half done.
uint8_t* prepareToReceive();
/// Takes one message off `socket`. `parcel` must be empty; it holds the payload afterwards, its
/// binders are not attached yet. `Nothing`: none is there (`wait` false), the socket's own time
/// limit passed, or the kernel has no memory to hand it over. Small messages cost no allocation.
Received receiveMessage(const Fd& socket, bool wait, Parcel& parcel, Envelope& envelope);
/// The same for the reply to a call, for which it waits. `room`: what prepareToReceive has given.
Received receiveReply(const Fd& socket, uint8_t* room, Parcel& parcel, Envelope& envelope);

}  // namespace android::transport

#endif
