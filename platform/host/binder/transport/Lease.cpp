// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Lease.h"

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <unordered_map>

#include "utils/Mutex.h"

namespace android::transport {

namespace {

constexpr rlim_t kMostOfOneProcess = 4096;
constexpr size_t kMostBytesOfOneProcess = size_t{16} * 1024 * 1024;
constexpr rlim_t kReserve = 128;

struct Counts {
    Mutex lock;
    std::unordered_map<pid_t, Lease::Amount> byPid PLATFORM_GUARDED_BY(lock);
};

Counts& counts() {
    static auto* const instance = new Counts();
    return *instance;
}

std::atomic<pid_t> gManager{0};

rlim_t descriptorLimit() {
    static const rlim_t most = [] {
        rlimit limit = {};
        return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
    }();
    return most;
}

size_t mostOfOneProcess() {
    return static_cast<size_t>(std::min(kMostOfOneProcess, descriptorLimit() / 4));
}

// Descriptors are numbered from below, so a high number says how many are in use.
bool usesReserve(int fd) {
    return static_cast<rlim_t>(fd) + kReserve >= descriptorLimit();
}

}  // namespace

void trustSharer(pid_t manager) {
    gManager = manager;
}

pid_t holderOf(pid_t sender, uint32_t named) {
    return named != 0 && sender == gManager ? static_cast<pid_t>(named) : sender;
}

Lease::Lease(pid_t pid, int fd, Amount amount) : mAmount(amount), mGranted(false) {
    if (amount.descriptors != 0 && usesReserve(fd)) {
        return;
    }
    Counts& table = counts();
    Mutex::Autolock lock(table.lock);
    Amount& held = table.byPid[pid];
    const size_t bytes = held.bytes + amount.bytes;
    mGranted =
        (amount.descriptors == 0 || held.descriptors + amount.descriptors <= mostOfOneProcess()) &&
        (amount.bytes == 0 || bytes <= kMostBytesOfOneProcess);
    if (mGranted) {
        mPid = pid;
        mScarce = bytes > kMostBytesOfOneProcess / 2;
        held.descriptors += amount.descriptors;
        held.bytes = bytes;
    }
}

Lease::~Lease() {
    if (mPid == 0) {
        return;
    }
    Counts& table = counts();
    Mutex::Autolock held(table.lock);
    const auto found = table.byPid.find(mPid);
    found->second.descriptors -= mAmount.descriptors;
    found->second.bytes -= mAmount.bytes;
    if (found->second.descriptors == 0 && found->second.bytes == 0) {
        table.byPid.erase(found);
    }
}

}  // namespace android::transport
