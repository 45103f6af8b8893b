// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_MAINCHANNEL_H
#define VOXTREL_SOCKET_MAINCHANNEL_H

#include <atomic>
#include <memory>

#include "socket/ControlSocket.h"
#include "socket/DrainingSocket.h"
#include "socket/FlowWindow.h"
#include "utils/Mutex.h"

namespace android::transport {

/// The socket of a reference that carries all of its one-way calls, which keeps them in order, and
/// one two-way call at a time behind them. It is opened by the first call.
///
/// Called on: any thread. Locks: its own, with which nobody waits for another process.
class MainChannel {
public:
    /// `predecessor`: the last one-way calls of an earlier reference to the same node, if any are
    /// on their way; those of this one follow them.
    MainChannel(const ControlSocket& control, std::shared_ptr<const DrainingSocket> predecessor);

    /// The one place for a two-way call. False while one is under way, and for ever once the socket
    /// has broken.
    bool tryTake() { return !mTaken.exchange(true); }
    void release() { mTaken = false; }

    /// Sends a call without waiting: `WOULD_BLOCK`, with the target for a one-way call, when it
    /// cannot go now; a two-way call then goes over another socket. `DEAD_OBJECT` when the owner
    /// has closed the socket: the next one-way call opens another one, two-way calls never do.
    status_t trySend(const Header& header, const Parcel& data, const Attachments& attachments,
                     PollTarget& target) PLATFORM_EXCLUDES(mSendLock);

    /// Where the reply to a two-way call comes; only for the thread that has taken the place and
    /// sent one.
    const Fd& socket() const { return mSocket; }
    /// What a reply says, over this socket or another one.
    void noteDone(uint32_t done) { mWindow.noteDone(done); }

    /// At the end of the reference: the socket when one-way calls in it may not have been received,
    /// else an invalid one. No call is under way then.
    Fd takeUndrained() PLATFORM_EXCLUDES(mSendLock);

private:
    bool mayFollow(PollTarget& target) PLATFORM_REQUIRES(mSendLock);

    const ControlSocket& mControl;
    // Opened under mSendLock by the first call, and then it stays: the thread that has sent on it
    // receives without the lock.
    Fd mSocket;
    std::atomic<bool> mTaken{false};
    // Held while a message is put into the socket, so that a two-way call knows what is ahead.
    Mutex mSendLock;
    std::shared_ptr<const DrainingSocket> mPredecessor PLATFORM_GUARDED_BY(mSendLock);
    // The owner has closed the socket alone, say because it was out of descriptors: one-way calls
    // go over the second one then.
    bool mIsClosed PLATFORM_GUARDED_BY(mSendLock) = false;
    Fd mSecond PLATFORM_GUARDED_BY(mSendLock);
    FlowWindow mWindow;
};

}  // namespace android::transport

#endif
