// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_PLATFORM_DRIVER_RAWBINDER_H
#define VOXTREL_BENCH_PLATFORM_DRIVER_RAWBINDER_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace bench {

/// A second process that answers through the kernel's driver, with nothing but ioctl in either: the
/// least that a call over the driver can cost. It takes the service manager's place of a device of
/// its own, such as /dev/rawbinder.
class RawBinder {
public:
    /// Ends the program with a line when the device cannot be had. Forks: to be made before the
    /// runtime is used.
    explicit RawBinder(const char* path);
    ~RawBinder();
    RawBinder(const RawBinder&) = delete;
    RawBinder& operator=(const RawBinder&) = delete;

    /// `size` bytes there and back.
    void call(size_t size);
    void sendOneWay(size_t size);
    /// Waits until all one-way calls have been taken.
    void drain();

private:
    uint32_t exchange(uint32_t code, size_t size, uint32_t flags);

    int mDriver = -1;
    pid_t mPid = -1;
    uint32_t mSent = 0;
    uint64_t mToFree = 0;
};

}  // namespace bench

#endif
