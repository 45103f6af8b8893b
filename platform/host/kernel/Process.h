// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_PROCESS_H
#define VOXTREL_KERNEL_PROCESS_H

#include <atomic>
#include <functional>
#include <memory>

#include "kernel/DeathTable.h"
#include "kernel/Device.h"
#include "kernel/HandleTable.h"
#include "kernel/ThreadStarter.h"

namespace android::kernel {

/// What all threads of this process share with the driver (which calls it binder_proc).
struct Process {
    std::unique_ptr<Device> device;
    HandleTable handles;
    DeathTable deaths;
    ThreadStarter threads;
    /// The driver asks for one more thread that serves.
    std::function<void()> spawnLooper;
    /// Set once, when this process becomes the service manager, and held ever after.
    std::atomic<BBinder*> contextManager{nullptr};
};

}  // namespace android::kernel

#endif
