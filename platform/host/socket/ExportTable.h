// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_EXPORTTABLE_H
#define VOXTREL_SOCKET_EXPORTTABLE_H

#include <unordered_map>

#include "binder/internal/LocalNodeSlot.h"
#include "socket/OneWayQueue.h"
#include "socket/Wire.h"
#include "support/BudgetPage.h"
#include "utils/Mutex.h"

namespace android::transport {

class ExportTable;

/// What the transport keeps about an object of this process that has been sent to another one.
struct ExportedNode final : LocalNode {
    ExportedNode(ExportTable& owner, const NodeId& nodeId, BBinder* object)
        : table(owner), id(nodeId), node(object) {}
    void objectDestroyed() override;

    ExportTable& table;
    const NodeId id;
    const wp<BBinder> node;
    OneWayQueue oneWayQueue;
};

/// The objects of this process that others have been given. Called on: any thread.
class ExportTable {
public:
    /// `budget`: of this process; null but in the manners of a driver.
    explicit ExportTable(const BudgetPage* budget = nullptr) : mBudget(budget) {}
    ExportTable(const ExportTable&) = delete;
    ExportTable& operator=(const ExportTable&) = delete;

    /// The record of `node`; made at its first export and gone with the node itself.
    ExportedNode& of(BBinder& node) PLATFORM_EXCLUDES(mLock);
    /// The object of this process that has this id, or null.
    sp<BBinder> find(const NodeId& id) PLATFORM_EXCLUDES(mLock);
    void forget(const NodeId& id) PLATFORM_EXCLUDES(mLock);

private:
    NodeId makeId() const;

    const BudgetPage* const mBudget;
    Mutex mLock;
    std::unordered_map<NodeId, ExportedNode*, NodeIdHash> mById PLATFORM_GUARDED_BY(mLock);
};

/// A random name for a node.
NodeId makeNodeId();

}  // namespace android::transport

#endif
