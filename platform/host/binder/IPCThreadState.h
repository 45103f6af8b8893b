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

    /// Who made the call that this thread is serving, by the kernel's word; this process itself
    /// outside of a call.
    pid_t getCallingPid() const { return mCallingPid; }
    uid_t getCallingUid() const { return mCallingUid; }
    /// From here on this process itself counts as the caller, until the token is given back.
    int64_t clearCallingIdentity();
    void restoreCallingIdentity(int64_t token);

    /// Returns when everything that this thread has let go of has left the process.
    void flushCommands();
    /// Serves calls and death notices on this thread; does not return.
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
