// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_SYSTEMCALLS_H
#define VOXTREL_KERNEL_SYSTEMCALLS_H

#include <cstddef>
#include <functional>

#include "support/Fd.h"

namespace android::kernel {

/// The system calls that reach the driver, and those that start threads; a test puts its own in
/// their place. Results and `errno` are the kernel's. Called on: any thread.
class SystemCalls {
public:
    virtual ~SystemCalls() = default;

    /// Not `valid` on failure.
    virtual transport::Fd open(const char* path);
    virtual int ioctl(int fd, unsigned long request, void* argument);
    /// Read-only memory that the driver writes into; null on failure.
    virtual void* map(int fd, size_t size);
    virtual void unmap(void* address, size_t size);
    /// A thread that nobody joins. 0 or an error number.
    virtual int startThread(std::function<void()> body);
};

}  // namespace android::kernel

#endif
