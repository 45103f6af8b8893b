// SPDX-License-Identifier: Apache-2.0
#include "support/Fd.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>

#include "support/ForkGuard.h"

namespace android::transport {

namespace {

constexpr size_t kWordBits = 64;

// Read in a forked child, where a lock could be held for ever: bits, set and cleared atomically.
std::array<std::atomic<uint64_t>, Fd::kTracked / kWordBits> gOpen{};

uint64_t bitOf(int fd) {
    return uint64_t{1} << (static_cast<size_t>(fd) % kWordBits);
}

std::atomic<uint64_t>* wordOf(int fd) {
    const auto index = static_cast<size_t>(fd);
    return index < Fd::kTracked ? &gOpen[index / kWordBits] : nullptr;
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
    if (fd < 0 || isForkedChild()) {
        return;
    }
    if (wordOf(fd) != nullptr) {
        wordOf(fd)->fetch_and(~bitOf(fd), std::memory_order_relaxed);
    }
    close(fd);
}

void Fd::closeAll() {
    for (size_t index = 0; index < gOpen.size(); ++index) {
        const uint64_t word = gOpen[index].exchange(0);
        for (size_t bit = 0; word != 0 && bit < kWordBits; ++bit) {
            if (((word >> bit) & 1U) != 0) {
                close(static_cast<int>(index * kWordBits + bit));
            }
        }
    }
}

}  // namespace android::transport
