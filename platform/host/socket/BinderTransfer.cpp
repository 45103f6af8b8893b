// SPDX-License-Identifier: Apache-2.0
#include "socket/BinderTransfer.h"

#include "binder/Binder.h"
#include "binder/BpBinder.h"
#include "binder/internal/ParcelFrame.h"
#include "socket/ControlChannel.h"
#include "socket/ExportTable.h"
#include "socket/ImportTable.h"
#include "socket/SocketReference.h"
#include "socket/ThreadPool.h"
#include "support/Log.h"

namespace android::transport {

namespace {

// Where no thread waits in the reactor, nobody sees that a reference has been let go: a process
// that gives away one object after the other would keep them all. It looks after some whenever it
// gives away another. Control sockets only: a call is never served by a thread that has not been
// told to serve.
void closeReleasedExports() {
    if (threadPool().isUsed()) {
        return;
    }
    for (const std::shared_ptr<EventHandler>& handler : reactor().ready()) {
        if (dynamic_cast<ControlChannel*>(handler.get()) != nullptr) {
            handler->onReady();
        } else {
            reactor().rearmIfKept(*handler);
        }
    }
}

Fd exportNode(BBinder& node, const Destination& to) {
    closeReleasedExports();
    SocketPair pair = makeSocketPair();
    if (!pair.held.valid()) {
        return Fd();
    }
    // Those who hear of the death from the other control sockets may ask the service manager at
    // once.
    if (to.isManager) {
        pair.served = closedFirst(std::move(pair.served));
    }
    const auto control =
        std::make_shared<ControlChannel>(std::move(pair.served), sp<BBinder>(&node), QuotaCharge());
    return reactor().add(control) ? std::move(pair.held) : Fd();
}

SocketReference* referenceOf(const sp<IBinder>& binder) {
    auto* remote = binder->remoteBinder();
    return remote != nullptr ? dynamic_cast<SocketReference*>(&remote->reference()) : nullptr;
}

status_t detach(const sp<IBinder>& binder, const Destination& to, Deadline& deadline, NodeId* id,
                Fd* reference) {
    if (BBinder* local = binder->localBinder()) {
        *id = exportedNode(*local).id;
        *reference = exportNode(*local, to);
    } else {
        auto* known = referenceOf(binder);
        if (known == nullptr) {
            return BAD_TYPE;
        }
        *id = known->id();
        *reference = known->share(to.pid, deadline);
    }
    return reference->valid() ? OK : static_cast<status_t>(FAILED_TRANSACTION);
}

}  // namespace

status_t exportBinders(const Parcel& parcel, Attachments* out, Deadline& deadline,
                       const Destination& to) {
    const auto& objects = ParcelFrame::objects(parcel);
    if (objects.size() > kMaxObjects) {
        return FAILED_TRANSACTION;
    }
    for (const auto& object : objects) {
        ObjectRecord record = {static_cast<uint32_t>(object.offset), 0, {}};
        Fd reference;
        const status_t status = record.offset % 4 == 0
                                    ? detach(object.binder, to, deadline, &record.id, &reference)
                                    : static_cast<status_t>(BAD_VALUE);
        if (status != OK) {
            return status;
        }
        out->records.push_back(record);
        out->fds.push_back(std::move(reference));
    }
    return OK;
}

bool importBinders(Envelope& envelope, Parcel& parcel) {
    for (size_t i = 0; i < envelope.header().objectCount; ++i) {
        const ObjectRecord& record = envelope.record(i);
        Fd control = envelope.takeFd(i);
        if (!isPeerSocket(control)) {
            return false;
        }
        sp<IBinder> binder = findExported(record.id);
        if (binder == nullptr) {
            binder = importNode(record.id, std::move(control));
        }
        ParcelFrame(parcel).attach(record.offset, binder);
    }
    return true;
}

sp<IBinder> importManager(Fd control) {
    return importNode(makeNodeId(), std::move(control), true);
}

bool hasEnded(const sp<IBinder>& proxy) {
    const auto* reference = referenceOf(proxy);
    return reference == nullptr || reference->hasEnded();
}

}  // namespace android::transport
