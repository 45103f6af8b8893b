// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_IMPORTTABLE_H
#define VOXTREL_SOCKET_IMPORTTABLE_H

#include <unordered_map>

#include "binder/BpBinder.h"
#include "socket/Context.h"
#include "socket/DrainingSocket.h"
#include "socket/Wire.h"
#include "support/Fd.h"
#include "utils/Mutex.h"

namespace android::transport {

class SocketReference;

/// The proxies of nodes of other processes, one for each node. Called on: any thread.
class ImportTable {
public:
    ImportTable(const Context& context, DrainingSockets& draining)
        : mContext(context), mDraining(draining) {}
    ImportTable(const ImportTable&) = delete;
    ImportTable& operator=(const ImportTable&) = delete;

    /// The proxy of the node with this id: the one that there is, and `control` is closed; else a
    /// new one. `leadsToManager`: the node is the service manager's.
    sp<IBinder> proxyOf(const NodeId& id, Fd control, bool leadsToManager = false)
        PLATFORM_EXCLUDES(mLock);

private:
    struct Import {
        wp<BpBinder> proxy;
        SocketReference* reference = nullptr;
    };
    /// The proxy of this reference is gone. Called on: the thread that destroys it.
    void forget(SocketReference& reference) PLATFORM_EXCLUDES(mLock);
    void startDraining(SocketReference& reference);

    const Context& mContext;
    DrainingSockets& mDraining;
    Mutex mLock;
    std::unordered_map<NodeId, Import, NodeIdHash> mById PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
