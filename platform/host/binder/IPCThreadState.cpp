// SPDX-License-Identifier: Apache-2.0
#include "binder/IPCThreadState.h"

#include <unistd.h>

#include "binder/ProcessState.h"
#include "binder/transport/Transport.h"

namespace android {

IPCThreadState* IPCThreadState::self() {
    static thread_local IPCThreadState state;
    return &state;
}

IPCThreadState::IPCThreadState() : mCallingPid(getpid()), mCallingUid(getuid()) {}

int64_t IPCThreadState::clearCallingIdentity() {
    const auto pid = static_cast<uint64_t>(static_cast<uint32_t>(mCallingPid));
    const auto token = static_cast<int64_t>((static_cast<uint64_t>(mCallingUid) << 32) | pid);
    mCallingPid = getpid();
    mCallingUid = getuid();
    return token;
}

void IPCThreadState::restoreCallingIdentity(int64_t token) {
    const auto bits = static_cast<uint64_t>(token);
    mCallingPid = static_cast<pid_t>(static_cast<uint32_t>(bits));
    mCallingUid = static_cast<uid_t>(bits >> 32);
}

void IPCThreadState::flushCommands() {
    transport::transport().flush();
}

void IPCThreadState::joinThreadPool(bool /*isMain*/) {
    transport::transport().serveForever();
}

void IPCThreadState::setTheContextObject(const sp<BBinder>& manager) {
    ProcessState::self()->offerContextObject(manager);
}

}  // namespace android
