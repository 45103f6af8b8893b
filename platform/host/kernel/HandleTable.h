// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_HANDLETABLE_H
#define VOXTREL_KERNEL_HANDLETABLE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>

#include "binder/BpBinder.h"
#include "binder/transport/Reference.h"
#include "utils/Mutex.h"

namespace android::kernel {

/// The proxies of this process by handle: one proxy for a node.
///
/// Called on: any thread. Locks: its own, also while it calls `Reference::unwatch`.
class HandleTable {
public:
    /// Makes the reference of a new proxy; called with the table's lock held.
    using Factory = std::function<std::unique_ptr<transport::Reference>(uint32_t handle)>;

    explicit HandleTable(Factory factory) : mFactory(std::move(factory)) {}

    struct Found {
        sp<BpBinder> proxy;
        bool isNew;  ///< BC_INCREFS and BC_ACQUIRE are still to be written
    };
    Found find(uint32_t handle);

    /// Unwatches and removes this reference, but not one made for the same handle meanwhile.
    void forget(uint32_t handle, const transport::Reference& reference);

private:
    struct Entry {
        wp<BpBinder> proxy;
        transport::Reference* reference = nullptr;  ///< alive until it is forgotten
    };

    const Factory mFactory;
    Mutex mLock;
    std::unordered_map<uint32_t, Entry> mEntries PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::kernel

#endif
