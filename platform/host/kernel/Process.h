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

/// What the threads of this process share: the counterpart of the driver's binder_proc.
struct Process {
    std::unique_ptr<Device> device;
    HandleTable handles;
    DeathTable deaths;
    ThreadStarter threads;
    /// On BR_SPAWN_LOOPER: starts one more looper.
    std::function<void()> spawnLooper;
    /// The node of handle 0, once this process is the service manager; kept alive by the transport.
    std::atomic<BBinder*> contextManager{nullptr};
};

}  // namespace android::kernel

#endif
