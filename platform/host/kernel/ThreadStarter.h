// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_THREADSTARTER_H
#define VOXTREL_KERNEL_THREADSTARTER_H

#include <atomic>
#include <functional>
#include <vector>

#include "kernel/SystemCalls.h"
#include "utils/Mutex.h"

namespace android::kernel {

/// Starts the threads of the transport.
///
/// Called on: any thread. Locks: its own.
class ThreadStarter {
public:
    explicit ThreadStarter(SystemCalls& system) : mSystem(system) {}

    /// At once or, where that fails, by a later `retry`: the driver requests no other looper until
    /// the one that it has requested registers.
    void start(std::function<void()> body);
    void retry();

private:
    SystemCalls& mSystem;
    std::atomic<bool> mHasUnstarted{false};
    Mutex mLock;
    std::vector<std::function<void()>> mUnstarted PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::kernel

#endif
