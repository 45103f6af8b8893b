// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_QUOTA_H
#define VOXTREL_SOCKET_QUOTA_H

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>

#include "socket/PeerIdentity.h"
#include "support/Fd.h"
#include "utils/Mutex.h"

namespace android::transport {

/// Who made the other end of a socket; pid 0 when it is outside of this pid namespace.
PeerIdentity peerOf(const Fd& socket);

/// What a peer is charged for.
struct QuotaAmount {
    size_t descriptors;
    size_t bytes;
};

/// What other processes may make this one hold: sockets to serve, and queued one-way calls with
/// their descriptors and memory. Each process has a limited share, and so has each user other than
/// this process's own. A reserve of descriptors is kept from all.
///
/// A user's share of descriptors is as many as are left: one alone gets half of them, two a third
/// each. Called on: any thread.
class Quotas {
public:
    Quotas() = default;
    Quotas(const Quotas&) = delete;
    Quotas& operator=(const Quotas&) = delete;

    /// Since when no other process has had a socket served here; empty while one has.
    std::optional<std::chrono::steady_clock::time_point> unusedSince() PLATFORM_EXCLUDES(mLock);

    /// The service manager's process. In a socket that it passes on it may name who is to have it:
    /// otherwise a client that asks often would use up the manager's share for all.
    void trustManager(pid_t manager) { mManager = manager; }
    /// Who a socket sent by `sender` is charged to; `named` is whom it names, with the pid 0 for
    /// nobody.
    PeerIdentity chargedPeer(PeerIdentity sender, PeerIdentity named) const;

private:
    friend class QuotaCharge;

    /// False when it is more than `peer` may have: then nothing is charged.
    bool charge(PeerIdentity peer, int fd, QuotaAmount amount) PLATFORM_EXCLUDES(mLock);
    void giveBack(PeerIdentity peer, QuotaAmount amount) PLATFORM_EXCLUDES(mLock);
    /// Numbers wrap around: a change may be a decrease.
    void note(PeerIdentity peer, QuotaAmount change) PLATFORM_REQUIRES(mLock);

    std::atomic<pid_t> mManager{0};
    Mutex mLock;
    std::unordered_map<pid_t, QuotaAmount> mByPid PLATFORM_GUARDED_BY(mLock);
    std::unordered_map<uid_t, QuotaAmount> mByUid PLATFORM_GUARDED_BY(mLock);
    size_t mDescriptors PLATFORM_GUARDED_BY(mLock) = 0;
    std::chrono::steady_clock::time_point mUnused PLATFORM_GUARDED_BY(mLock) =
        std::chrono::steady_clock::now();
};

/// A charge on one peer's quota; the destructor gives it back.
class QuotaCharge {
public:
    /// For a socket that this process has made of its own will: not limited.
    QuotaCharge() = default;
    /// For a socket that `peer` wants served; `fd` is its number here.
    QuotaCharge(Quotas& quotas, PeerIdentity peer, int fd)
        : QuotaCharge(quotas, peer, fd, {1, 0}) {}
    /// For more than that; `fd` is the highest number among the descriptors.
    QuotaCharge(Quotas& quotas, PeerIdentity peer, int fd, QuotaAmount amount)
        : mPeer(peer), mAmount(amount), mGranted(quotas.charge(peer, fd, amount)) {
        mQuotas = mGranted ? &quotas : nullptr;
    }
    QuotaCharge(QuotaCharge&& other) noexcept
        : mQuotas(std::exchange(other.mQuotas, nullptr)),
          mPeer(other.mPeer),
          mAmount(other.mAmount),
          mGranted(other.mGranted) {}
    QuotaCharge& operator=(QuotaCharge&&) = delete;
    ~QuotaCharge() {
        if (mQuotas != nullptr) {
            mQuotas->giveBack(mPeer, mAmount);
        }
    }

    bool granted() const { return mGranted; }

private:
    Quotas* mQuotas = nullptr;  // null when there is nothing to give back
    PeerIdentity mPeer{};
    QuotaAmount mAmount{};
    bool mGranted = true;
};

}  // namespace android::transport

#endif
