// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_IMPORTTABLE_H
#define VOXTREL_SOCKET_IMPORTTABLE_H

#include "binder/IBinder.h"
#include "socket/Wire.h"
#include "support/Fd.h"

namespace android::transport {

class SocketReference;

/// The proxy of the node with this name: the one that this process has already, and `control` is
/// closed; else a new one. `leadsToManager`: it is the service manager's. Called on: any thread.
sp<IBinder> importNode(const NodeId& id, Fd control, bool leadsToManager = false);

/// The proxy of this reference is gone. Called on: the thread that destroys it.
void forgetImport(SocketReference& reference);

}  // namespace android::transport

#endif
