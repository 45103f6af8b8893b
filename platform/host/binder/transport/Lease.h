// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_LEASE_H
#define VOXTREL_BINDER_TRANSPORT_LEASE_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace android::transport {

/// What another process may make this one hold: sockets to serve, and one-way calls that wait for
/// their turn, with their descriptors and the memory they take. Each process has a limited share,
/// and a reserve of descriptors is kept from all: a flood from one harms no other.
class Lease {
public:
    struct Amount {
        size_t descriptors;
        size_t bytes;
    };
    /// For a socket that this process has made of its own will: not limited.
    Lease() = default;
    /// For a socket that process `pid` wants served; `fd` is its number here.
    Lease(pid_t pid, int fd) : Lease(pid, fd, {1, 0}) {}
    /// For more than that; `fd` is the highest number among the descriptors.
    Lease(pid_t pid, int fd, Amount amount);
    Lease(Lease&& other) noexcept
        : mPid(std::exchange(other.mPid, 0)),
          mAmount(other.mAmount),
          mGranted(std::exchange(other.mGranted, true)),
          mScarce(std::exchange(other.mScarce, false)) {}
    Lease& operator=(Lease&&) = delete;
    ~Lease();

    bool granted() const { return mGranted; }
    /// More than half of what the process may have in bytes was used when this was granted.
    bool scarce() const { return mScarce; }

private:
    pid_t mPid = 0;
    Amount mAmount{};
    bool mGranted = true;
    bool mScarce = false;
};

/// Connections to the service manager run to this process. It may name, in a socket that it passes
/// on, who is to have it: otherwise whoever asks it often would use up its share for all.
void trustSharer(pid_t manager);
/// The process that a socket sent by `sender` is for; `named` is whom it names, or 0.
pid_t holderOf(pid_t sender, uint32_t named);

}  // namespace android::transport

#endif
