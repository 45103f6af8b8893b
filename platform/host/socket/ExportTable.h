// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_EXPORTTABLE_H
#define VOXTREL_SOCKET_EXPORTTABLE_H

#include "binder/internal/LocalNode.h"
#include "socket/OneWayQueue.h"
#include "socket/Wire.h"

namespace android::transport {

/// What the transport keeps about an object of this process that has been sent to another one.
struct ExportedNode final : LocalNode {
    ExportedNode(const NodeId& nodeId, BBinder* object) : id(nodeId), node(object) {}
    void objectDestroyed() override;

    const NodeId id;
    const wp<BBinder> node;
    OneWayQueue oneWayQueue;
};

/// A random name for a node.
NodeId makeNodeId();

/// The record of `node`; made at its first export and gone with the node itself.
ExportedNode& exportedNode(BBinder& node);

/// The object of this process that has this id, or null.
sp<BBinder> findExported(const NodeId& id);

}  // namespace android::transport

#endif
