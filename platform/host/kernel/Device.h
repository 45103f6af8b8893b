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

/// This process's descriptor of the driver and the memory that the driver receives into.
///
/// Called on: any thread. Locks: none.
class Device {
public:
    /// Room for what is received: 1 MiB without two pages, half of it for one-way calls.
    static size_t mappingSize();

    /// Null where the driver cannot be used; `error` is then one line that says what to do.
    static std::unique_ptr<Device> open(SystemCalls& system, const std::string& path,
                                        std::string& error);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    /// Writes the commands and, unless `returns` is null, waits for something to read. An
    /// interruption by a signal goes unnoticed.
    /// @return 0 or an error number; the commands that the driver has not taken are left.
    int exchange(CommandBuffer& commands, ReturnBuffer* returns);

    /// Writes all the commands and runs nobody's code, so that a lock may be held. What the
    /// calling thread has put off stays so. The log says what the driver does not take.
    void write(CommandBuffer commands);

    /// How many threads the driver may ask for, beside the first. 0 or an error number.
    int setMaxThreads(uint32_t count);
    /// EBUSY: there is a service manager already.
    int becomeContextManager();
    /// The calling thread will not use the driver again.
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
