// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_PROCESSSTATE_H
#define VOXTREL_BINDER_PROCESSSTATE_H

#include <cstddef>

#include "binder/Binder.h"
#include "utils/Mutex.h"

namespace android {

/// The runtime as the whole process sees it. Called on: any thread.
class ProcessState : public virtual RefBase {
public:
    static sp<ProcessState> self();

    /// Starts threads of the runtime that serve calls and death notices.
    void startThreadPool();
    /// How many threads the runtime may start; 15 unless set.
    status_t setThreadPoolMaxThreadCount(size_t maxThreads);

    /// The service manager's node; null when there is none. A service manager that has died is
    /// looked for anew.
    sp<IBinder> getContextObject(const sp<IBinder>& caller);
    /// This process becomes the service manager. False when there is one already, or its place
    /// cannot be had; the log says which.
    bool becomeContextManager();

private:
    friend class IPCThreadState;
    ProcessState() = default;
    ~ProcessState() override = default;
    void offerContextObject(const sp<BBinder>& manager);

    Mutex mLock;
    sp<BBinder> mOffered PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android

#endif
