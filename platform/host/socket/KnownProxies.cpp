// SPDX-License-Identifier: Apache-2.0
#include "socket/KnownProxies.h"

#include <unordered_map>

#include "binder/BpBinder.h"
#include "socket/Farewell.h"
#include "socket/SocketReference.h"
#include "utils/Mutex.h"

namespace android::transport {

namespace {

struct KnownProxy {
    wp<BpBinder> proxy;
    SocketReference* reference = nullptr;
};

struct KnownProxies {
    Mutex lock;
    std::unordered_map<NodeId, KnownProxy, NodeIdHash> byId PLATFORM_GUARDED_BY(lock);
};

// Never destroyed: proxies may outlive the end of main.
KnownProxies& proxies() {
    static auto* const instance = new KnownProxies();
    return *instance;
}

// Before another reference to the same node can be made.
void sayFarewell(SocketReference& reference) {
    Fd unheard = reference.takeUnheard();
    if (unheard.valid()) {
        farewells().add(reference.id(), std::move(unheard));
    }
}

}  // namespace

sp<IBinder> proxyOf(const NodeId& id, Fd door, bool leadsToManager) {
    sp<BpBinder> dead;  // let go outside of the lock
    KnownProxies& known = proxies();
    Mutex::Autolock held(known.lock);
    KnownProxy& entry = known.byId[id];
    sp<BpBinder> proxy = entry.proxy.promote();
    if (proxy != nullptr && proxy->isBinderAlive()) {
        return proxy;
    }
    if (proxy == nullptr && entry.reference != nullptr) {
        sayFarewell(*entry.reference);  // it is being destroyed, and has not come here yet
    }
    dead = std::move(proxy);
    auto reference = std::make_unique<SocketReference>(id, std::move(door), farewells().find(id),
                                                       leadsToManager);
    entry.reference = reference.get();
    proxy = new BpBinder(std::move(reference));
    entry.proxy = proxy;
    return proxy;
}

void forgetReference(SocketReference& reference) {
    KnownProxies& known = proxies();
    Mutex::Autolock held(known.lock);
    const auto found = known.byId.find(reference.id());
    if (found != known.byId.end() && found->second.reference == &reference) {
        sayFarewell(reference);
        known.byId.erase(found);
    }
}

}  // namespace android::transport
