// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_RETURNBUFFER_H
#define VOXTREL_KERNEL_RETURNBUFFER_H

#include <cstddef>

#include "kernel/Protocol.h"

namespace android::kernel {

/// One return (BR_...) of the driver.
class Return {
public:
    Return() = default;
    Return(uint32_t command, const uint8_t* payload) : mCommand(command), mPayload(payload) {}

    uint32_t command() const { return mCommand; }
    /// Zeros behind the end where the driver sends less than a T.
    template <typename T>
    T payload() const {
        T value = {};
        copyTo(&value, sizeof(value));
        return value;
    }

private:
    void copyTo(void* out, size_t size) const;

    uint32_t mCommand = BR_NOOP;
    const uint8_t* mPayload = nullptr;
};

/// The returns of one read. Each wait for a reply has a buffer of its own, because a nested call
/// that is served meanwhile reads as well.
///
/// Called on: one thread. Locks: none.
class ReturnBuffer {
public:
    static constexpr size_t kCapacity = 256;

    uint8_t* data() { return mBytes; }
    /// The driver has written so many bytes.
    void fill(size_t size) {
        mSize = size <= kCapacity ? size : kCapacity;
        mPosition = 0;
    }
    /// False when no complete return is left.
    bool next(Return* out);

private:
    alignas(8) uint8_t mBytes[kCapacity];
    size_t mSize = 0;
    size_t mPosition = 0;
};

}  // namespace android::kernel

#endif
