// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_ONEWAYBUDGET_H
#define VOXTREL_SOCKET_ONEWAYBUDGET_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "socket/Wire.h"
#include "support/Fd.h"
#include "utils/Mutex.h"

namespace android::transport {

/// The bytes of one-way calls that a process has still to carry out, in the manners of a driver:
/// the kernel keeps them in half of the process's 1 MB. All senders count in one page that it
/// shares with them, and are trusted to: this is for tests. Called on: any thread. Locks: none.
class OneWayBudget {
public:
    /// A page of this process's own, as the receiver of calls.
    static Fd makePage();

    /// The one of a process that has given this page away; not `valid` when the page is none.
    explicit OneWayBudget(Fd page);
    ~OneWayBudget();
    OneWayBudget(const OneWayBudget&) = delete;
    OneWayBudget& operator=(const OneWayBudget&) = delete;

    bool valid() const { return mUsed != nullptr; }
    const Fd& page() const { return mPage; }

    /// A call with so many bytes of payload is about to be sent. False when there is no room.
    bool take(size_t payload);
    /// It has been carried out, or was not sent.
    void giveBack(size_t payload);

private:
    using Counter = std::atomic<uint32_t>;
    static_assert(Counter::is_always_lock_free, "processes share it");

    const Fd mPage;
    Counter* mUsed = nullptr;
};

/// The budget of the process that a reference leads to, asked for through the control socket.
/// Called on: any thread. Locks: its own, also while it waits for the first answer.
class PeerBudget {
public:
    /// Null while the process has not said, or when it keeps none. The first call waits for the
    /// answer, for `kSendTimeoutMs` at most; the others take what is there.
    OneWayBudget* find(const Fd& control) PLATFORM_EXCLUDES(mLock);

private:
    void ask(const Fd& control) PLATFORM_REQUIRES(mLock);
    void readAnswer() PLATFORM_REQUIRES(mLock);

    Mutex mLock;
    bool mAsked PLATFORM_GUARDED_BY(mLock) = false;
    Fd mAnswer PLATFORM_GUARDED_BY(mLock);
    std::unique_ptr<OneWayBudget> mBudget PLATFORM_GUARDED_BY(mLock);
};

/// Is this call counted in this process's budget? Never in the default manners.
bool isCounted(const Header& oneWay);

}  // namespace android::transport

#endif
