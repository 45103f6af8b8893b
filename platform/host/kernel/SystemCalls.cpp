// SPDX-License-Identifier: Apache-2.0
#include "kernel/SystemCalls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

namespace android::kernel {

transport::Fd SystemCalls::open(const char* path) {
    return transport::Fd(::open(path, O_RDWR | O_CLOEXEC));
}

int SystemCalls::ioctl(int fd, unsigned long request, void* argument) {
    return ::ioctl(fd, request, argument);
}

void* SystemCalls::map(int fd, size_t size) {
    void* address = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_NORESERVE, fd, 0);
    return address != MAP_FAILED ? address : nullptr;
}

void SystemCalls::unmap(void* address, size_t size) {
    (void)::munmap(address, size);  // fails only for what was never mapped
}

}  // namespace android::kernel
