// SPDX-License-Identifier: Apache-2.0
#include "socket/Quota.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <string>
#include <unordered_map>

#include "utils/Mutex.h"

namespace android::transport {

namespace {

using Amount = QuotaCharge::Amount;

constexpr size_t kMaxOfOneProcess = 4096;
constexpr size_t kMaxBytesOfOneProcess = size_t{16} * 1024 * 1024;
constexpr size_t kMaxBytesOfOneUser = 4 * kMaxBytesOfOneProcess;
constexpr size_t kReserve = 128;

// Processes that have gone, or cannot be seen from here, share what one user may have.
constexpr uid_t kUnknownUser = static_cast<uid_t>(-1);

Amount operator+(const Amount& a, const Amount& b) {
    return {a.descriptors + b.descriptors, a.bytes + b.bytes};
}

// A table entry that holds nothing is gone.
template <typename Key>
class Usage {
public:
    Amount of(Key key) const {
        const auto found = mHeld.find(key);
        return found != mHeld.end() ? found->second : Amount{};
    }
    void add(Key key, const Amount& amount) {
        Amount& held = mHeld[key];
        held = held + amount;
    }
    void take(Key key, const Amount& amount) {
        const auto found = mHeld.find(key);
        found->second.descriptors -= amount.descriptors;
        found->second.bytes -= amount.bytes;
        if (found->second.descriptors == 0 && found->second.bytes == 0) {
            mHeld.erase(found);
        }
    }

private:
    std::unordered_map<Key, Amount> mHeld;
};

struct Counts {
    Mutex lock;
    Usage<pid_t> byPid PLATFORM_GUARDED_BY(lock);
    Usage<uid_t> byUid PLATFORM_GUARDED_BY(lock);
    size_t descriptors PLATFORM_GUARDED_BY(lock) = 0;
    std::chrono::steady_clock::time_point unused PLATFORM_GUARDED_BY(lock) =
        std::chrono::steady_clock::now();
};

Counts& counts() {
    static auto* const instance = new Counts();
    return *instance;
}

std::atomic<pid_t> gManager{0};

// Asked for each time: a process may change it.
size_t descriptorLimit() {
    rlimit limit = {};
    const rlim_t most = getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
    return static_cast<size_t>(std::min<rlim_t>(most, std::numeric_limits<size_t>::max()));
}

// Descriptors are numbered from below, so a high number says how many are in use.
size_t descriptorsLeft(size_t leased, int fd) {
    const size_t used = std::max(leased, static_cast<size_t>(std::max(fd, 0))) + kReserve;
    const size_t most = descriptorLimit();
    return most > used ? most - used : 0;
}

bool mayHaveDescriptors(const Amount& ofProcess, const Amount& ofUser, bool ownUser, size_t left) {
    return left > 0 && ofProcess.descriptors <= std::min(kMaxOfOneProcess, descriptorLimit() / 4) &&
           (ownUser || ofUser.descriptors <= left);
}

bool mayHaveBytes(const Amount& ofProcess, const Amount& ofUser, bool ownUser) {
    return ofProcess.bytes <= kMaxBytesOfOneProcess &&
           (ownUser || ofUser.bytes <= kMaxBytesOfOneUser);
}

uid_t userOf(pid_t pid) {
    struct stat status {};
    const std::string folder = "/proc/" + std::to_string(pid);
    return stat(folder.c_str(), &status) == 0 ? status.st_uid : kUnknownUser;
}

}  // namespace

void trustManager(pid_t manager) {
    gManager = manager;
}

PeerIdentity chargedPeer(PeerIdentity sender, uint32_t named) {
    if (named == 0 || sender.pid != gManager) {
        return sender;
    }
    const auto pid = static_cast<pid_t>(named);
    return {pid, userOf(pid)};
}

QuotaCharge::QuotaCharge(PeerIdentity holder, int fd, Amount amount)
    : mHolder(holder), mGranted(false) {
    const bool ownUser = holder.uid == geteuid();
    Counts& table = counts();
    Mutex::Autolock lock(table.lock);
    const Amount ofProcess = table.byPid.of(holder.pid) + amount;
    const Amount ofUser = table.byUid.of(holder.uid) + amount;
    if ((amount.descriptors != 0 &&
         !mayHaveDescriptors(ofProcess, ofUser, ownUser, descriptorsLeft(table.descriptors, fd))) ||
        (amount.bytes != 0 && !mayHaveBytes(ofProcess, ofUser, ownUser))) {
        return;
    }
    mGranted = true;
    mScarce = ofProcess.bytes > kMaxBytesOfOneProcess / 2;
    mAmount = amount;
    table.byPid.add(holder.pid, amount);
    table.byUid.add(holder.uid, amount);
    table.descriptors += amount.descriptors;
}

QuotaCharge::~QuotaCharge() {
    if (mAmount.descriptors == 0 && mAmount.bytes == 0) {
        return;
    }
    Counts& table = counts();
    Mutex::Autolock held(table.lock);
    table.byPid.take(mHolder.pid, mAmount);
    table.byUid.take(mHolder.uid, mAmount);
    table.descriptors -= mAmount.descriptors;
    if (table.descriptors == 0) {
        table.unused = std::chrono::steady_clock::now();
    }
}

std::optional<std::chrono::steady_clock::time_point> unusedSince() {
    Counts& table = counts();
    Mutex::Autolock held(table.lock);
    return table.descriptors == 0 ? std::optional(table.unused) : std::nullopt;
}

}  // namespace android::transport
