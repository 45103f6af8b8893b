// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SOCKETREFERENCE_H
#define VOXTREL_SOCKET_SOCKETREFERENCE_H

#include <array>
#include <atomic>
#include <memory>
#include <vector>

#include "binder/transport/Reference.h"
#include "socket/Deadline.h"
#include "socket/DrainingSocket.h"
#include "socket/Message.h"
#include "socket/PeerBudget.h"
#include "socket/Reactor.h"
#include "utils/Mutex.h"

namespace android::transport {

/// A reference that is a socket, the control socket: whoever holds this end may call the node, and
/// its closing lets the node go. Calls travel on sockets of their own, opened through the control
/// socket when they are first needed: one for all one-way calls, which keeps them in order, and one
/// for each two-way call that is under way at the same time, so that its caller sleeps on its own
/// reply.
class SocketReference final : public Reference {
public:
    /// `predecessor`: the last one-way calls of an earlier reference to the same node, if any are
    /// on their way. `leadsToManager`: the node is the service manager's.
    SocketReference(const NodeId& id, Fd control, std::shared_ptr<const DrainingSocket> predecessor,
                    bool leadsToManager);
    ~SocketReference() override;
    SocketReference(const SocketReference&) = delete;
    SocketReference& operator=(const SocketReference&) = delete;

    status_t call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override;
    bool hasEnded() const override;
    status_t watch(const wp<BpBinder>& proxy) override;
    void unwatch() override;

    const NodeId& id() const { return mId; }
    /// A new reference to the same node, to be given away: a control socket that the node's process
    /// serves, or a dead one when the node has died. Invalid when there are no descriptors left, or
    /// the node's process does not listen. `holder` is who it is for, 0 when that is not known.
    Fd share(pid_t holder, Deadline& deadline);
    /// For the end: the main socket when one-way calls in it may not have been received, else an
    /// invalid one. No call is under way then.
    Fd takeUndrained();

private:
    class Watch;

    status_t callTwoWay(const Header& header, const Parcel& data, Parcel* reply);
    status_t callOneWay(const Header& header, const Parcel& data);
    status_t callOneWayWithinBudget(Header header, const Parcel& data);
    status_t tryMain(const Header& header, const Parcel& data, const Attachments& attachments,
                     PollTarget& target);
    status_t finishOnMain(status_t sent, Parcel* reply, Deadline& deadline);
    status_t callBeside(const Header& header, const Parcel& data, const Attachments& attachments,
                        Parcel* reply, Deadline& deadline);
    bool mayFollow(PollTarget& target) PLATFORM_REQUIRES(mSendLock);
    bool mayGoBehind() const PLATFORM_REQUIRES(mSendLock);
    status_t receiveReply(const Fd& socket, Parcel* reply, bool* broken);
    void noteDone(uint32_t done);
    status_t open(Role role, pid_t holder, Fd* out, PollTarget& target) const;
    status_t takeSocket(Fd* out, PollTarget& target);
    void giveBack(Fd socket);
    status_t whyClosed(Deadline& deadline) const;

    const NodeId mId;
    const Fd mControl;
    const bool mLeadsToManager;

    // The owner has not taken the last reference that was to be passed on: the next one does not
    // wait.
    std::atomic<bool> mDoesNotListen{false};

    Mutex mLock;
    std::vector<Fd> mIdle PLATFORM_GUARDED_BY(mLock);
    std::shared_ptr<Watch> mWatch PLATFORM_GUARDED_BY(mLock);

    // Opened under mSendLock by its first call, and then it stays: who has sent on it receives
    // without the lock.
    Fd mMain;
    // A two-way call is under way on the main socket (or it has broken, and takes no more).
    std::atomic<bool> mMainIsTaken{false};
    // Held while a message is put into the main socket, so that a two-way call knows what is ahead.
    // Nobody waits for another process with it.
    Mutex mSendLock;
    std::shared_ptr<const DrainingSocket> mPredecessor PLATFORM_GUARDED_BY(mSendLock);
    // The owner has closed the main socket alone, say because it was out of descriptors: one-way
    // calls go over another one then, two-way calls beside.
    bool mMainIsClosed PLATFORM_GUARDED_BY(mSendLock) = false;
    Fd mSecondMain PLATFORM_GUARDED_BY(mSendLock);
    uint32_t mOneWaysSent PLATFORM_GUARDED_BY(mSendLock) = 0;
    uint32_t mBytesSent PLATFORM_GUARDED_BY(mSendLock) = 0;
    // mBytesSent as it was after each of the last one-way calls, by their number.
    static constexpr size_t kRemembered = 16;
    static_assert(kRemembered > kMaxAhead, "reaches back to the oldest that may be ahead");
    std::array<uint32_t, kRemembered> mBytesUpTo PLATFORM_GUARDED_BY(mSendLock) = {};
    std::atomic<uint32_t> mOneWaysDone{0};
    // Null but in the manners of a driver.
    const std::unique_ptr<PeerBudget> mBudget;
};

}  // namespace android::transport

#endif
