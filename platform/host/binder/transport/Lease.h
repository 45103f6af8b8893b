// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_LEASE_H
#define VOXTREL_BINDER_TRANSPORT_LEASE_H

#include <sys/types.h>

#include <cstdint>
#include <utility>

namespace android::transport {

/// One of the sockets that another process may have us serve. Each process has a limited number of
/// them, and a reserve of descriptors is kept from all: a flood from one harms no other.
class Lease {
public:
    /// For a socket that this process has made of its own will: not limited.
    Lease() = default;
    /// For a socket that process `pid` wants served; `fd` is its number here.
    Lease(pid_t pid, int fd);
    Lease(Lease&& other) noexcept
        : mPid(std::exchange(other.mPid, 0)), mGranted(std::exchange(other.mGranted, true)) {}
    Lease& operator=(Lease&&) = delete;
    ~Lease();

    bool granted() const { return mGranted; }

private:
    pid_t mPid = 0;
    bool mGranted = true;
};

/// Connections to the service manager run to this process. It may name, in a socket that it passes
/// on, who is to have it: otherwise whoever asks it often would use up its share for all.
void trustSharer(pid_t manager);
/// The process that a socket sent by `sender` is for; `named` is whom it names, or 0.
pid_t holderOf(pid_t sender, uint32_t named);

}  // namespace android::transport

#endif
