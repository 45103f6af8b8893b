// SPDX-License-Identifier: Apache-2.0
#include "socket/Fd.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "socket/Log.h"

namespace android::transport {

namespace {

constexpr size_t kWordBits = 64;
constexpr size_t kTracked = 65536;

// Read in a forked child, where a lock could be held for ever: bits, set and cleared atomically.
std::array<std::atomic<uint64_t>, kTracked / kWordBits> gOpen{};
std::atomic<bool> gForked{false};
std::atomic<bool> gSaid{false};

uint64_t bitOf(int fd) {
    return uint64_t{1} << (static_cast<size_t>(fd) % kWordBits);
}

std::atomic<uint64_t>* wordOf(int fd) {
    const auto index = static_cast<size_t>(fd);
    return index < kTracked ? &gOpen[index / kWordBits] : nullptr;
}

void closeAllInChild() {
    gForked = true;
    for (size_t index = 0; index < gOpen.size(); ++index) {
        const uint64_t word = gOpen[index].exchange(0);
        for (size_t bit = 0; word != 0 && bit < kWordBits; ++bit) {
            if (((word >> bit) & 1U) != 0) {
                close(static_cast<int>(index * kWordBits + bit));
            }
        }
    }
}

}  // namespace

Fd::Fd(int fd) : mFd(fd) {
    if (fd >= 0 && wordOf(fd) != nullptr) {
        wordOf(fd)->fetch_or(bitOf(fd), std::memory_order_relaxed);
    }
}

Fd& Fd::operator=(Fd&& other) noexcept {
    if (this != &other) {
        reset();
        mFd = std::exchange(other.mFd, -1);
    }
    return *this;
}

void Fd::reset() {
    const int fd = std::exchange(mFd, -1);
    if (fd < 0 || gForked.load(std::memory_order_relaxed)) {
        return;
    }
    if (wordOf(fd) != nullptr) {
        wordOf(fd)->fetch_and(~bitOf(fd), std::memory_order_relaxed);
    }
    close(fd);
}

Fd closedFirst(Fd fd) {
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return fd;
    }
    const auto count = static_cast<int>(std::min<rlim_t>(limit.rlim_cur, kTracked));
    Fd high(fcntl(fd.get(), F_DUPFD_CLOEXEC, count - count / 16));
    return high.valid() ? std::move(high) : std::move(fd);
}

void armForkGuard() {
    // Only fails for want of memory at start-up; the children are then merely not warned.
    static const int armed = pthread_atfork(nullptr, nullptr, &closeAllInChild);
    (void)armed;
}

bool isForkedChild() {
    return gForked.load(std::memory_order_relaxed);
}

bool refusedAfterFork() {
    if (!isForkedChild()) {
        return false;
    }
    if (!gSaid.exchange(true)) {
        logLine(
            "this process was forked from one that had used the binder runtime, and cannot use "
            "it: start a new program instead");
    }
    return true;
}

}  // namespace android::transport
