// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_ONEWAYQUEUE_H
#define VOXTREL_SOCKET_ONEWAYQUEUE_H

#include <cstddef>
#include <deque>
#include <memory>
#include <unordered_map>

#include "socket/Wire.h"
#include "utils/Mutex.h"

namespace android::transport {

class CallChannel;
struct Incoming;

/// One-way calls to a node are served one at a time, in the order in which they were received. A
/// thread that receives one while another is being served leaves it here, and the thread that is at
/// it goes on with it.
///
/// What waits here is limited as the kernel's driver limits it: a connection whose share is used up
/// is not read any further, so that its sender feels that the node is slow. A two-way call goes
/// behind one-way calls only when they are few and small (`kMaxAhead`, `kMaxBytesAhead`), and
/// those never keep a connection from being read: what they wait for may be that very call.
///
/// Because of that promise a process with very many connections could leave very much here. What it
/// leaves in all nodes together is counted: with half of its share used none of its connections is
/// read on beyond the promise, and with all of it used the next message is refused. To leave it
/// unread would break the promise without a word; a connection that is closed says so.
class OneWayQueue {
public:
    enum class Place {
        Mine,     ///< it is the caller's turn; the message is still its own
        Waiting,  ///< the message has been left here; the connection may be read on
        Full,     ///< the message has been left here; the connection is not to be read until `next`
                  ///< gives it back
        Refused,  ///< its sender has too much waiting already; the message is still the caller's
    };
    Place enter(const std::shared_ptr<CallChannel>& end, std::unique_ptr<Incoming>& message)
        PLATFORM_EXCLUDES(mLock);

    struct Next {
        std::unique_ptr<Incoming> message;  ///< to be served; null when the turn has ended
        std::shared_ptr<CallChannel> end;   ///< where it came from
        bool readOn = false;                ///< `end` was full and is to be read again
    };
    /// Ends the caller's turn unless something waits.
    Next next() PLATFORM_EXCLUDES(mLock);

private:
    struct Waiting {
        std::shared_ptr<CallChannel> end;
        std::unique_ptr<Incoming> message;
        size_t size;
    };
    struct Share {
        size_t messages = 0;
        size_t bytes = 0;
        bool full = false;
        /// The sender relies on it that the connection is read on.
        bool isPromised() const { return messages <= kMaxAhead && bytes <= kMaxBytesAhead; }
    };

    Mutex mLock;
    bool mBusy PLATFORM_GUARDED_BY(mLock) = false;
    size_t mBytes PLATFORM_GUARDED_BY(mLock) = 0;
    std::deque<Waiting> mWaiting PLATFORM_GUARDED_BY(mLock);
    std::unordered_map<const CallChannel*, Share> mShares PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
