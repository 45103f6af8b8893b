// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_IPCTHREADSTATE_H
#define VOXTREL_BINDER_IPCTHREADSTATE_H

#include <sys/types.h>

#include <cstdint>

#include "binder/Binder.h"
#include "utils/Errors.h"

namespace android {

/// The runtime as one thread sees it.
class IPCThreadState {
public:
    static IPCThreadState* self();

    /// The sender of the call that this thread is serving, as the kernel gives it; outside of a
    /// call this process itself.
    pid_t getCallingPid() const { return mCallingPid; }
    uid_t getCallingUid() const { return mCallingUid; }
    /// Makes this process itself the caller until the token is restored.
    int64_t clearCallingIdentity();
    void restoreCallingIdentity(int64_t token);

    /// Returns when everything that this thread has let go of has left the process.
    void flushCommands();
    /// Serves calls and death notices on this thread. Returns only where it cannot: in a forked
    /// child, or when the kernel serves this process no longer.
    void joinThreadPool(bool isMain = true);

    /// The node that `ProcessState::becomeContextManager` makes the service manager's.
    void setTheContextObject(const sp<BBinder>& manager);

    IPCThreadState(const IPCThreadState&) = delete;
    IPCThreadState& operator=(const IPCThreadState&) = delete;

private:
    friend class CallingIdentity;
    IPCThreadState();

    pid_t mCallingPid;
    uid_t mCallingUid;
};

}  // namespace android

#endif
