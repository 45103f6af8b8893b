// SPDX-License-Identifier: Apache-2.0
#include "socket/ImportTable.h"

#include <new>

#include "socket/SocketReference.h"

namespace android::transport {

sp<IBinder> ImportTable::proxyOf(const NodeId& id, Fd control, bool leadsToManager) {
    // Let go outside of the lock, which both of them take; the reference where memory runs out.
    sp<BpBinder> dead;
    std::unique_ptr<Reference> reference;
    Mutex::Autolock held(mLock);
    Import& entry = mById[id];
    sp<BpBinder> proxy = entry.proxy.promote();
    if (proxy != nullptr && proxy->isBinderAlive()) {
        return proxy;
    }
    if (proxy == nullptr && entry.reference != nullptr) {
        startDraining(*entry.reference);  // it is being destroyed, and has not come here yet
    }
    dead = std::move(proxy);
    auto made = std::make_unique<SocketReference>(mContext, id, std::move(control),
                                                  mDraining.find(id), leadsToManager,
                                                  [this](SocketReference& gone) { forget(gone); });
    entry.reference = made.get();
    reference = std::move(made);
    proxy = new BpBinder(std::move(reference));
    entry.proxy = proxy;
    return proxy;
}

void ImportTable::forget(SocketReference& reference) {
    Mutex::Autolock held(mLock);
    const auto found = mById.find(reference.id());
    if (found != mById.end() && found->second.reference == &reference) {
        startDraining(reference);
        mById.erase(found);
    }
}

// Before another reference to the same node can be made.
void ImportTable::startDraining(SocketReference& reference) {
    Fd undrained = reference.takeUndrained();
    if (undrained.valid()) {
        try {
            mDraining.add(reference.id(), std::move(undrained));
        } catch (const std::bad_alloc&) {
            // The next reference does not wait until what was sent through this one is served.
        }
    }
}

}  // namespace android::transport
