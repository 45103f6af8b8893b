// SPDX-License-Identifier: Apache-2.0
#include "socket/ImportTable.h"

#include "socket/SocketReference.h"
#include "support/ForkGuard.h"

namespace android::transport {

namespace {

// A reference that leaves the table when it goes.
class ImportedReference final : public SocketReference {
public:
    ImportedReference(ImportTable& table, const Context& context, const NodeId& id, Fd control,
                      std::shared_ptr<const DrainingSocket> predecessor, bool leadsToManager)
        : SocketReference(context, id, std::move(control), std::move(predecessor), leadsToManager),
          mTable(table) {}
    ~ImportedReference() override {
        if (!isForkedChild()) {  // the table may be locked for ever
            mTable.forget(*this);
        }
    }
    ImportedReference(const ImportedReference&) = delete;
    ImportedReference& operator=(const ImportedReference&) = delete;

private:
    ImportTable& mTable;
};

}  // namespace

sp<IBinder> ImportTable::proxyOf(const NodeId& id, Fd control, bool leadsToManager) {
    sp<BpBinder> dead;  // let go outside of the lock
    Mutex::Autolock held(mLock);
    Import& entry = mById[id];
    sp<BpBinder> proxy = entry.proxy.promote();
    if (proxy != nullptr && proxy->isBinderAlive()) {
        return proxy;
    }
    if (proxy == nullptr && entry.reference != nullptr) {
        startDraining(*entry.reference);  // it is being destroyed, and has not come here yet
    }
    dead = std::move(proxy);
    auto reference = std::make_unique<ImportedReference>(*this, mContext, id, std::move(control),
                                                         mDraining.find(id), leadsToManager);
    entry.reference = reference.get();
    proxy = new BpBinder(std::move(reference));
    entry.proxy = proxy;
    return proxy;
}

void ImportTable::forget(SocketReference& reference) {
    Mutex::Autolock held(mLock);
    const auto found = mById.find(reference.id());
    if (found != mById.end() && found->second.reference == &reference) {
        startDraining(reference);
        mById.erase(found);
    }
}

// Before another reference to the same node can be made.
void ImportTable::startDraining(SocketReference& reference) {
    Fd undrained = reference.takeUndrained();
    if (undrained.valid()) {
        mDraining.add(reference.id(), std::move(undrained));
    }
}

}  // namespace android::transport
