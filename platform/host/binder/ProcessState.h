// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_PROCESSSTATE_H
#define VOXTREL_BINDER_PROCESSSTATE_H

#include <cstddef>

#include "binder/IBinder.h"

namespace android {

/// The runtime as the whole process sees it. Called on: any thread.
class ProcessState : public virtual RefBase {
public:
    static sp<ProcessState> self();

    /// From here on calls and death notices are served, by threads that the runtime starts.
    void startThreadPool();
    /// How many threads the runtime may start; 15 unless set.
    status_t setThreadPoolMaxThreadCount(size_t maxThreads);

private:
    ProcessState() = default;
    ~ProcessState() override = default;
};

}  // namespace android

#endif
