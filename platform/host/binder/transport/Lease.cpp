// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Lease.h"

#include <sys/resource.h>

#include <unordered_map>

#include "utils/Mutex.h"

namespace android::transport {

namespace {

constexpr int kMostOfOneProcess = 4096;
constexpr rlim_t kReserve = 128;

struct Counts {
    Mutex lock;
    std::unordered_map<pid_t, int> byPid PLATFORM_GUARDED_BY(lock);
};

Counts& counts() {
    static auto* const instance = new Counts();
    return *instance;
}

// Descriptors are numbered from below, so a high number says how many are in use.
bool usesReserve(int fd) {
    static const rlim_t most = [] {
        rlimit limit = {};
        return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
    }();
    return static_cast<rlim_t>(fd) + kReserve >= most;
}

}  // namespace

Lease::Lease(pid_t pid, int fd) : mPid(pid), mGranted(false) {
    if (usesReserve(fd)) {
        mPid = 0;
        return;
    }
    Counts& table = counts();
    Mutex::Autolock held(table.lock);
    int& count = table.byPid[pid];
    ++count;
    mGranted = count <= kMostOfOneProcess;
}

Lease::~Lease() {
    if (mPid == 0) {
        return;
    }
    Counts& table = counts();
    Mutex::Autolock held(table.lock);
    const auto found = table.byPid.find(mPid);
    if (--found->second == 0) {
        table.byPid.erase(found);
    }
}

}  // namespace android::transport
