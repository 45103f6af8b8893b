// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_DEVICE_H
#define VOXTREL_KERNEL_DEVICE_H

#include <memory>
#include <string>
#include <utility>

#include "kernel/CommandBuffer.h"
#include "kernel/ReturnBuffer.h"
#include "kernel/SystemCalls.h"

namespace android::kernel {

/// The open binder device and the mapping that the driver delivers transactions into.
///
/// Called on: any thread. Locks: none.
class Device {
public:
    /// 1 MiB less two pages; the driver gives half of it to one-way calls.
    static size_t mappingSize();

    /// Null where the driver cannot be used; `error` is then one line that says what to do.
    static std::unique_ptr<Device> open(SystemCalls& system, const std::string& path,
                                        std::string& error);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    /// One BINDER_WRITE_READ, begun again when a signal interrupts it. Writes the commands and,
    /// unless `returns` is null, waits for something to read.
    /// @return 0 or an error number; commands that the driver has not consumed are left.
    int exchange(CommandBuffer& commands, ReturnBuffer* returns);

    /// Writes these commands only, not what the calling thread has queued. No callback runs, so a
    /// lock may be held. An error is logged.
    void write(CommandBuffer commands);

    /// How many loopers the driver may request by BR_SPAWN_LOOPER. 0 or an error number.
    int setMaxThreads(uint32_t count);
    /// EBUSY: there is a service manager already.
    int becomeContextManager();
    /// The calling thread will not use the driver again: BINDER_THREAD_EXIT.
    void exitThread();

private:
    Device(SystemCalls& system, transport::Fd fd) : mSystem(system), mFd(std::move(fd)) {}
    bool prepare(const std::string& path, std::string& error);
    int control(unsigned long request, void* argument);

    SystemCalls& mSystem;
    const transport::Fd mFd;
    void* mMemory = nullptr;
};

}  // namespace android::kernel

#endif
