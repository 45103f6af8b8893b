// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_LOCALNODES_H
#define VOXTREL_SOCKET_LOCALNODES_H

#include "binder/Binder.h"
#include "socket/Turns.h"
#include "socket/Wire.h"

namespace android::transport {

/// Where an object of this process keeps its record.
class NodeAccess {
public:
    static std::atomic<NodeRecord*>& record(BBinder& node) { return node.mRecord; }
};

/// What the transport keeps about an object of this process that has been sent to another one.
struct NodeRecord {
    NodeId id;
    wp<BBinder> node;
    Turns oneWayTurns;
};

/// A random name for a node.
NodeId makeNodeId();

/// The record of `node`; made at its first export and gone with the node itself.
NodeRecord& recordOf(BBinder& node);

void forgetRecord(NodeRecord* record);

/// The object of this process that has this id, or null.
sp<BBinder> findLocalNode(const NodeId& id);

}  // namespace android::transport

#endif
