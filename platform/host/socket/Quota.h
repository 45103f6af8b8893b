// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_QUOTA_H
#define VOXTREL_SOCKET_QUOTA_H

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace android::transport {

/// A process and its user, by the kernel's word.
struct PeerIdentity {
    pid_t pid;
    uid_t uid;
};

/// What another process may make this one hold: sockets to serve, and one-way calls that wait for
/// their turn, with their descriptors and the memory they take. Each process has a limited share,
/// and so has each user other than this process's own, for a user may have any number of processes.
/// A reserve of descriptors is kept from all: a flood from one harms no other.
///
/// A user's share of descriptors is as many as are left: one alone gets half of them, two a third
/// each, and there is always something left for the next.
class QuotaCharge {
public:
    struct Amount {
        size_t descriptors;
        size_t bytes;
    };
    /// For a socket that this process has made of its own will: not limited.
    QuotaCharge() = default;
    /// For a socket that `holder` wants served; `fd` is its number here.
    QuotaCharge(PeerIdentity holder, int fd) : QuotaCharge(holder, fd, {1, 0}) {}
    /// For more than that; `fd` is the highest number among the descriptors.
    QuotaCharge(PeerIdentity holder, int fd, Amount amount);
    QuotaCharge(QuotaCharge&& other) noexcept
        : mHolder(other.mHolder),
          mAmount(std::exchange(other.mAmount, {})),
          mGranted(std::exchange(other.mGranted, true)),
          mScarce(std::exchange(other.mScarce, false)) {}
    QuotaCharge& operator=(QuotaCharge&&) = delete;
    ~QuotaCharge();

    bool granted() const { return mGranted; }
    /// More than half of what the process may have in bytes was used when this was granted.
    bool scarce() const { return mScarce; }

private:
    PeerIdentity mHolder{};
    Amount mAmount{};  // nothing when it is not granted
    bool mGranted = true;
    bool mScarce = false;
};

/// Since when no other process has had a socket served here; empty while one has.
std::optional<std::chrono::steady_clock::time_point> unusedSince();

/// Connections to the service manager run to this process. It may name, in a socket that it passes
/// on, who is to have it: otherwise whoever asks it often would use up its share for all.
void trustManager(pid_t manager);
/// Who a socket sent by `sender` is for; `named` is the process that it names, or 0.
PeerIdentity chargedPeer(PeerIdentity sender, uint32_t named);

}  // namespace android::transport

#endif
