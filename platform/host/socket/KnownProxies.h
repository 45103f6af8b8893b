// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_KNOWNPROXIES_H
#define VOXTREL_SOCKET_KNOWNPROXIES_H

#include "binder/IBinder.h"
#include "socket/Wire.h"
#include "support/Fd.h"

namespace android::transport {

class SocketReference;

/// The proxy of the node with this name: the one that this process has already, and `door` is
/// closed; else a new one. `leadsToManager`: it is the service manager's. Called on: any thread.
sp<IBinder> proxyOf(const NodeId& id, Fd door, bool leadsToManager = false);

/// The proxy of this reference is gone. Called on: the thread that destroys it.
void forgetReference(SocketReference& reference);

}  // namespace android::transport

#endif
