// SPDX-License-Identifier: Apache-2.0
#include "kernel/SystemCalls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

#include <cerrno>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

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

int SystemCalls::startThread(std::function<void()> body) {
    try {
        std::thread(std::move(body)).detach();
        return 0;
    } catch (const std::system_error& error) {
        return error.code().value();
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

}  // namespace android::kernel
