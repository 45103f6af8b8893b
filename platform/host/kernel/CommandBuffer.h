// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_COMMANDBUFFER_H
#define VOXTREL_KERNEL_COMMANDBUFFER_H

#include <cstddef>
#include <cstring>
#include <vector>

#include "kernel/Protocol.h"

namespace android::kernel {

/// Commands (BC_...) that have not been written to the driver yet, in order.
///
/// Called on: one thread. Locks: none.
class CommandBuffer {
public:
    CommandBuffer() { mBytes.reserve(kUsual); }

    /// BC_ENTER_LOOPER, BC_REGISTER_LOOPER, BC_EXIT_LOOPER.
    void add(uint32_t command) { append(&command, sizeof(command)); }
    /// BC_INCREFS, BC_ACQUIRE, BC_RELEASE, BC_DECREFS.
    void addHandle(uint32_t command, uint32_t handle) { addWith(command, handle); }
    /// BC_FREE_BUFFER, BC_DEAD_BINDER_DONE.
    void addWord(uint32_t command, binder_uintptr_t word) { addWith(command, word); }
    /// BC_INCREFS_DONE, BC_ACQUIRE_DONE.
    void addNode(uint32_t command, const binder_ptr_cookie& node) { addWith(command, node); }
    /// BC_REQUEST_DEATH_NOTIFICATION, BC_CLEAR_DEATH_NOTIFICATION.
    void addDeath(uint32_t command, uint32_t handle, binder_uintptr_t cookie) {
        addWith(command, binder_handle_cookie{handle, cookie});
    }
    /// BC_TRANSACTION, BC_REPLY. The data it points to must live until the command is consumed.
    void addTransaction(uint32_t command, const binder_transaction_data& transaction) {
        addWith(command, transaction);
    }

    const uint8_t* data() const { return mBytes.data(); }
    size_t size() const { return mBytes.size(); }
    bool empty() const { return mBytes.empty(); }
    /// The driver has consumed so many bytes.
    void consume(size_t size) {
        mBytes.erase(mBytes.begin(), mBytes.begin() + static_cast<ptrdiff_t>(size));
    }
    void clear() { mBytes.clear(); }

private:
    static constexpr size_t kUsual = 512;

    void append(const void* bytes, size_t size) {
        const auto* from = static_cast<const uint8_t*>(bytes);
        mBytes.insert(mBytes.end(), from, from + size);
    }
    template <typename T>
    void addWith(uint32_t command, const T& payload) {
        append(&command, sizeof(command));
        append(&payload, sizeof(payload));
    }

    std::vector<uint8_t> mBytes;
};

}  // namespace android::kernel

#endif
