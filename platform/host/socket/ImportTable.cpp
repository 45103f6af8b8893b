// SPDX-License-Identifier: Apache-2.0
#include "socket/ImportTable.h"

#include <unordered_map>

#include "binder/BpBinder.h"
#include "socket/DrainingSocket.h"
#include "socket/SocketReference.h"
#include "utils/Mutex.h"

namespace android::transport {

namespace {

struct Import {
    wp<BpBinder> proxy;
    SocketReference* reference = nullptr;
};

struct ImportTable {
    Mutex lock;
    std::unordered_map<NodeId, Import, NodeIdHash> byId PLATFORM_GUARDED_BY(lock);
};

// Never destroyed: proxies may outlive the end of main.
ImportTable& proxies() {
    static auto* const instance = new ImportTable();
    return *instance;
}

// Before another reference to the same node can be made.
void startDraining(SocketReference& reference) {
    Fd undrained = reference.takeUndrained();
    if (undrained.valid()) {
        drainingSockets().add(reference.id(), std::move(undrained));
    }
}

}  // namespace

sp<IBinder> importNode(const NodeId& id, Fd control, bool leadsToManager) {
    sp<BpBinder> dead;  // let go outside of the lock
    ImportTable& known = proxies();
    Mutex::Autolock held(known.lock);
    Import& entry = known.byId[id];
    sp<BpBinder> proxy = entry.proxy.promote();
    if (proxy != nullptr && proxy->isBinderAlive()) {
        return proxy;
    }
    if (proxy == nullptr && entry.reference != nullptr) {
        startDraining(*entry.reference);  // it is being destroyed, and has not come here yet
    }
    dead = std::move(proxy);
    auto reference = std::make_unique<SocketReference>(id, std::move(control),
                                                       drainingSockets().find(id), leadsToManager);
    entry.reference = reference.get();
    proxy = new BpBinder(std::move(reference));
    entry.proxy = proxy;
    return proxy;
}

void forgetImport(SocketReference& reference) {
    ImportTable& known = proxies();
    Mutex::Autolock held(known.lock);
    const auto found = known.byId.find(reference.id());
    if (found != known.byId.end() && found->second.reference == &reference) {
        startDraining(reference);
        known.byId.erase(found);
    }
}

}  // namespace android::transport
