// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_ONEWAYQUEUE_H
#define VOXTREL_SOCKET_ONEWAYQUEUE_H

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <unordered_map>

#include "binder/Parcel.h"
#include "socket/Message.h"
#include "socket/Quota.h"
#include "support/Overtaking.h"
#include "utils/Mutex.h"

namespace android::transport {

class CallChannel;

/// One received call in full.
struct Incoming {
    Parcel parcel;
    Envelope envelope;
    /// Not `OK`: its binders or bytes could not be received, and the call fails with this.
    status_t lost = OK;
    /// Of a one-way call in the manners of a driver.
    Overtaking::Arrival arrival;
    /// While it is queued.
    std::optional<QuotaCharge> charge;
};

/// One-way calls to a node are served one at a time, in the order in which they were received. A
/// thread that receives one while another is being served queues it for the thread that serves.
///
/// A channel of which too much is queued is not read, so that its sender is slowed down. A two-way
/// call goes behind one-way calls only when they are few and small (`kMaxAhead`, `kMaxBytesAhead`),
/// and so many never keep a channel from being read: they may be waiting for that very call. A
/// process may have many channels, so what it has in all queues is charged to its quota, and beyond
/// that its next message closes its channel.
class OneWayQueue {
public:
    enum class Entry {
        ServeNow,  ///< nothing is being served; the caller serves its message, and then `next`
        Queued,    ///< the queue has the message; the channel may be read on
        Full,      ///< the same, but the channel is not to be read until `next` gives it back
        Refused,   ///< its sender has too much waiting already; the message is still the caller's
        OutOfMemory,  ///< it cannot be queued; the message is still the caller's
    };
    Entry enter(Quotas& quotas, const std::shared_ptr<CallChannel>& channel,
                std::unique_ptr<Incoming>& message) PLATFORM_EXCLUDES(mLock);

    struct Next {
        std::unique_ptr<Incoming> message;     ///< to be served; null when nothing is queued
        std::shared_ptr<CallChannel> channel;  ///< where it came from
        bool readOn = false;                   ///< `channel` was full and is to be read again
    };
    /// The caller, which serves, goes on with this, or ends.
    Next next() PLATFORM_EXCLUDES(mLock);

private:
    struct Queued {
        std::shared_ptr<CallChannel> channel;
        std::unique_ptr<Incoming> message;
    };
    /// What is queued of one channel.
    struct Amount {
        size_t messages = 0;
        size_t bytes = 0;
        bool full = false;
    };

    Entry put(Quotas& quotas, const std::shared_ptr<CallChannel>& channel,
              std::unique_ptr<Incoming>& message) PLATFORM_REQUIRES(mLock);

    Mutex mLock;
    bool mBusy PLATFORM_GUARDED_BY(mLock) = false;
    std::deque<Queued> mQueued PLATFORM_GUARDED_BY(mLock);
    std::unordered_map<const CallChannel*, Amount> mAmounts PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
