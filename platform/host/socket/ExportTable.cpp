// SPDX-License-Identifier: Apache-2.0
#include "socket/ExportTable.h"

#include <sys/random.h>

#include "support/ForkGuard.h"

namespace android::transport {

NodeId makeNodeId() {
    NodeId id;
    size_t done = 0;
    while (done < sizeof(id)) {
        const ssize_t got = getrandom(reinterpret_cast<char*>(&id) + done, sizeof(id) - done, 0);
        done += got > 0 ? static_cast<size_t>(got) : 0;
    }
    return id;
}

NodeId ExportTable::makeId() const {
    NodeId id = makeNodeId();
    if (mBudget != nullptr && mBudget->valid()) {
        id.words[1] = mBudget->name();
    }
    return id;
}

ExportedNode& ExportTable::of(BBinder& node) {
    std::atomic<LocalNode*>& slot = LocalNodeSlot::of(node);
    if (LocalNode* known = slot.load(std::memory_order_acquire)) {
        return static_cast<ExportedNode&>(*known);
    }
    Mutex::Autolock held(mLock);
    if (LocalNode* known = slot.load(std::memory_order_relaxed)) {
        return static_cast<ExportedNode&>(*known);
    }
    auto* record = new ExportedNode(*this, makeId(), &node);
    mById[record->id] = record;
    slot.store(record, std::memory_order_release);
    return *record;
}

sp<BBinder> ExportTable::find(const NodeId& id) {
    Mutex::Autolock held(mLock);
    const auto found = mById.find(id);
    return found != mById.end() ? found->second->node.promote() : nullptr;
}

void ExportTable::forget(const NodeId& id) {
    Mutex::Autolock held(mLock);
    mById.erase(id);
}

void ExportedNode::objectDestroyed() {
    if (isForkedChild()) {
        return;  // the table may be locked for ever; the record ends with the process
    }
    table.forget(id);
    delete this;
}

}  // namespace android::transport
