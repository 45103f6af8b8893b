// SPDX-License-Identifier: Apache-2.0
#include "kernel/HandleTable.h"

namespace android::kernel {

HandleTable::Found HandleTable::find(uint32_t handle) {
    // Where memory runs out it is let go outside of the lock, which it takes.
    std::unique_ptr<transport::Reference> reference;
    Mutex::Autolock held(mLock);
    Entry& entry = mEntries[handle];
    sp<BpBinder> proxy = entry.proxy.promote();
    if (proxy != nullptr) {
        return {proxy, false};
    }
    // The driver keeps one death request for a handle. That of a proxy which is being destroyed has
    // to be cleared before the new proxy can request its own.
    if (entry.reference != nullptr) {
        entry.reference->unwatch();
    }
    reference = mFactory(handle);
    entry.reference = reference.get();
    proxy = new BpBinder(std::move(reference));
    entry.proxy = proxy;
    return {proxy, true};
}

void HandleTable::forget(uint32_t handle, const transport::Reference& reference) {
    Mutex::Autolock held(mLock);
    const auto found = mEntries.find(handle);
    if (found != mEntries.end() && found->second.reference == &reference) {
        found->second.reference->unwatch();
        mEntries.erase(found);
    }
}

}  // namespace android::kernel
