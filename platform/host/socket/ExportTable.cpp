// SPDX-License-Identifier: Apache-2.0
#include "socket/ExportTable.h"

#include <sys/random.h>

#include <cstring>
#include <unordered_map>

#include "socket/CallChannel.h"
#include "socket/Incoming.h"
#include "support/ForkGuard.h"
#include "utils/Mutex.h"

namespace android::transport {

namespace {

struct ExportTable {
    Mutex lock;
    std::unordered_map<NodeId, ExportedNode*, NodeIdHash> byId PLATFORM_GUARDED_BY(lock);
};

// Never destroyed: nodes may outlive the end of main.
ExportTable& nodes() {
    static auto* const instance = new ExportTable();
    return *instance;
}

}  // namespace

NodeId makeNodeId() {
    NodeId id;
    size_t done = 0;
    while (done < sizeof(id)) {
        const ssize_t got = getrandom(reinterpret_cast<char*>(&id) + done, sizeof(id) - done, 0);
        done += got > 0 ? static_cast<size_t>(got) : 0;
    }
    return id;
}

ExportedNode& exportedNode(BBinder& node) {
    std::atomic<LocalNode*>& slot = LocalNodeSlot::of(node);
    if (LocalNode* known = slot.load(std::memory_order_acquire)) {
        return static_cast<ExportedNode&>(*known);
    }
    ExportTable& table = nodes();
    Mutex::Autolock held(table.lock);
    if (LocalNode* known = slot.load(std::memory_order_relaxed)) {
        return static_cast<ExportedNode&>(*known);
    }
    auto* record = new ExportedNode(makeNodeId(), &node);
    table.byId[record->id] = record;
    slot.store(record, std::memory_order_release);
    return *record;
}

sp<BBinder> findExported(const NodeId& id) {
    ExportTable& table = nodes();
    Mutex::Autolock held(table.lock);
    const auto found = table.byId.find(id);
    return found != table.byId.end() ? found->second->node.promote() : nullptr;
}

void ExportedNode::objectDestroyed() {
    if (isForkedChild()) {
        return;  // the table may be locked for ever; the record ends with the process
    }
    {
        ExportTable& table = nodes();
        Mutex::Autolock held(table.lock);
        table.byId.erase(id);
    }
    delete this;
}

}  // namespace android::transport
