// SPDX-License-Identifier: Apache-2.0
#include "socket/Quota.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

namespace android::transport {

namespace {

constexpr size_t kMaxOfOneProcess = 4096;
constexpr size_t kMaxBytesOfOneProcess = size_t{16} * 1024 * 1024;
constexpr size_t kMaxBytesOfOneUser = 4 * kMaxBytesOfOneProcess;
constexpr size_t kReserve = 128;

QuotaAmount operator+(const QuotaAmount& a, const QuotaAmount& b) {
    return {a.descriptors + b.descriptors, a.bytes + b.bytes};
}

// Not cached: the process may change it.
size_t descriptorLimit() {
    rlimit limit = {};
    const rlim_t most = getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
    return static_cast<size_t>(std::min<rlim_t>(most, std::numeric_limits<size_t>::max()));
}

// Descriptors are numbered from below, so a high number says how many are in use.
size_t descriptorsInUse(size_t charged, int fd) {
    return std::max(charged, static_cast<size_t>(std::max(fd, 0))) + kReserve;
}

bool mayHaveDescriptors(const QuotaAmount& ofProcess, const QuotaAmount& ofUser, bool ownUser,
                        size_t used) {
    const size_t most = descriptorLimit();
    return most > used && ofProcess.descriptors <= std::min(kMaxOfOneProcess, most / 4) &&
           (ownUser || ofUser.descriptors <= most - used);
}

bool mayHaveBytes(const QuotaAmount& ofProcess, const QuotaAmount& ofUser, bool ownUser) {
    return ofProcess.bytes <= kMaxBytesOfOneProcess &&
           (ownUser || ofUser.bytes <= kMaxBytesOfOneUser);
}

template <typename Key>
QuotaAmount heldBy(const std::unordered_map<Key, QuotaAmount>& usage, Key key) {
    const auto found = usage.find(key);
    return found != usage.end() ? found->second : QuotaAmount{};
}

// An entry that holds nothing is gone.
template <typename Key>
void add(std::unordered_map<Key, QuotaAmount>& usage, Key key, const QuotaAmount& change) {
    QuotaAmount& held = usage[key];
    held = held + change;
    if (held.descriptors == 0 && held.bytes == 0) {
        usage.erase(key);
    }
}

}  // namespace

PeerIdentity peerOf(const Fd& socket) {
    ucred peer = {};
    socklen_t size = sizeof(peer);
    const bool known = getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    return known ? PeerIdentity{peer.pid, peer.uid} : PeerIdentity{};
}

PeerIdentity Quotas::chargedPeer(PeerIdentity sender, PeerIdentity named) const {
    return named.pid == 0 || sender.pid != mManager ? sender : named;
}

bool Quotas::charge(PeerIdentity peer, int fd, QuotaAmount amount) {
    const bool ownUser = peer.uid == geteuid();
    Mutex::Autolock held(mLock);
    const QuotaAmount ofProcess = heldBy(mByPid, peer.pid) + amount;
    const QuotaAmount ofUser = heldBy(mByUid, peer.uid) + amount;
    if ((amount.descriptors != 0 &&
         !mayHaveDescriptors(ofProcess, ofUser, ownUser, descriptorsInUse(mDescriptors, fd))) ||
        (amount.bytes != 0 && !mayHaveBytes(ofProcess, ofUser, ownUser))) {
        return false;
    }
    note(peer, amount);
    return true;
}

void Quotas::giveBack(PeerIdentity peer, QuotaAmount amount) {
    Mutex::Autolock held(mLock);
    note(peer, {0 - amount.descriptors, 0 - amount.bytes});
    if (mDescriptors == 0) {
        mUnused = std::chrono::steady_clock::now();
    }
}

void Quotas::note(PeerIdentity peer, QuotaAmount change) {
    (void)mByUid[peer.uid];  // lest one counts what the other has no memory for
    add(mByPid, peer.pid, change);
    add(mByUid, peer.uid, change);
    mDescriptors += change.descriptors;
}

std::optional<std::chrono::steady_clock::time_point> Quotas::unusedSince() {
    Mutex::Autolock held(mLock);
    return mDescriptors == 0 ? std::optional(mUnused) : std::nullopt;
}

}  // namespace android::transport
