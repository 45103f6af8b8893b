// SPDX-License-Identifier: Apache-2.0
#include "socket/Objects.h"

#include "binder/Binder.h"
#include "binder/BpBinder.h"
#include "binder/internal/ParcelFrame.h"
#include "socket/DoorEnd.h"
#include "socket/KnownProxies.h"
#include "socket/LocalNodes.h"
#include "socket/SocketReference.h"
#include "socket/ThreadPool.h"
#include "support/Log.h"

namespace android::transport {

namespace {

// Where no thread waits in the reactor, nobody sees that a reference has been let go: a process
// that gives away one object after the other would keep them all. It looks after some whenever it
// gives away another. Doors only: a call is never served by a thread that has not been told to
// serve.
void lookAfterDoors() {
    if (threadPool().isUsed()) {
        return;
    }
    for (const std::shared_ptr<Source>& source : reactor().ready()) {
        if (dynamic_cast<DoorEnd*>(source.get()) != nullptr) {
            source->onReady();
        } else {
            reactor().rearmIfKept(*source);
        }
    }
}

Fd exportNode(BBinder& node, const Destination& to) {
    lookAfterDoors();
    SocketPair pair = makeSocketPair();
    if (!pair.held.valid()) {
        return Fd();
    }
    // Those who hear of the death from the other doors may ask the service manager at once.
    if (to.isManager) {
        pair.served = closedFirst(std::move(pair.served));
    }
    const auto door =
        std::make_shared<DoorEnd>(std::move(pair.served), sp<BBinder>(&node), Lease());
    return reactor().add(door) ? std::move(pair.held) : Fd();
}

SocketReference* referenceOf(const sp<IBinder>& binder) {
    auto* remote = binder->remoteBinder();
    return remote != nullptr ? dynamic_cast<SocketReference*>(&remote->reference()) : nullptr;
}

status_t detach(const sp<IBinder>& binder, const Destination& to, Patience& patience, NodeId* id,
                Fd* reference) {
    if (BBinder* local = binder->localBinder()) {
        *id = recordOf(*local).id;
        *reference = exportNode(*local, to);
    } else {
        auto* known = referenceOf(binder);
        if (known == nullptr) {
            return BAD_TYPE;
        }
        *id = known->id();
        *reference = known->share(to.pid, patience);
    }
    return reference->valid() ? OK : static_cast<status_t>(FAILED_TRANSACTION);
}

}  // namespace

status_t detachBinders(const Parcel& parcel, Attachments* out, Patience& patience,
                       const Destination& to) {
    const auto& objects = ParcelFrame::objects(parcel);
    if (objects.size() > kMostObjects) {
        return FAILED_TRANSACTION;
    }
    for (const auto& object : objects) {
        ObjectRecord record = {static_cast<uint32_t>(object.offset), 0, {}};
        Fd reference;
        const status_t status = record.offset % 4 == 0
                                    ? detach(object.binder, to, patience, &record.id, &reference)
                                    : static_cast<status_t>(BAD_VALUE);
        if (status != OK) {
            return status;
        }
        out->records.push_back(record);
        out->fds.push_back(std::move(reference));
    }
    return OK;
}

bool attachBinders(Envelope& envelope, Parcel& parcel) {
    for (size_t i = 0; i < envelope.header().objectCount; ++i) {
        const ObjectRecord& record = envelope.record(i);
        Fd door = envelope.takeFd(i);
        if (!isPeerSocket(door)) {
            return false;
        }
        sp<IBinder> binder = findLocalNode(record.id);
        if (binder == nullptr) {
            binder = proxyOf(record.id, std::move(door));
        }
        ParcelFrame(parcel).attach(record.offset, binder);
    }
    return true;
}

sp<IBinder> proxyOfManager(Fd door) {
    return proxyOf(makeNodeId(), std::move(door), true);
}

bool hasEnded(const sp<IBinder>& proxy) {
    const auto* reference = referenceOf(proxy);
    return reference == nullptr || reference->hasEnded();
}

}  // namespace android::transport
