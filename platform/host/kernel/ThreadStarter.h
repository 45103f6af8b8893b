// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_THREADSTARTER_H
#define VOXTREL_KERNEL_THREADSTARTER_H

#include <functional>

#include "kernel/SystemCalls.h"

namespace android::kernel {

/// Starts the threads of the transport.
///
/// Called on: any thread. Locks: none.
class ThreadStarter {
public:
    explicit ThreadStarter(SystemCalls& system) : mSystem(system) {}

    void start(std::function<void()> body);

private:
    SystemCalls& mSystem;
};

}  // namespace android::kernel

#endif
