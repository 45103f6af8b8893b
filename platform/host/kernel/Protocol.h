// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_PROTOCOL_H
#define VOXTREL_KERNEL_PROTOCOL_H

#include <cstdint>

#include "binder/IBinder.h"
// The kernel's header defines the same macro with other spaces.
#undef B_PACK_CHARS
#include <linux/android/binder.h>

namespace android::kernel {

static_assert(sizeof(binder_uintptr_t) == 8, "protocol 8 has 64-bit pointers everywhere");
static_assert(sizeof(binder_write_read) == 48, "the same layout on every processor");
static_assert(sizeof(binder_transaction_data) == 64, "the same layout on every processor");
static_assert(sizeof(flat_binder_object) == 24, "the same layout on every processor");
static_assert(sizeof(binder_handle_cookie) == 12, "the same layout on every processor");

/// The name of newer kernel headers is BR_TRANSACTION_PENDING_FROZEN: the one-way call waits until
/// its receiver is thawed.
constexpr uint32_t kTransactionPendingFrozen = _IO('r', 20);

/// A pointer as the driver carries it, also in a 32-bit process.
inline binder_uintptr_t toWord(const void* pointer) {
    return reinterpret_cast<uintptr_t>(pointer);
}

template <typename T>
T* toPointer(binder_uintptr_t word) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the driver's words are integers
    return reinterpret_cast<T*>(static_cast<uintptr_t>(word));
}

}  // namespace android::kernel

#endif
