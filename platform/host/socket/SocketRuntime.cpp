// SPDX-License-Identifier: Apache-2.0
#include "socket/SocketRuntime.h"

#include "binder/Binder.h"
#include "binder/BpBinder.h"
#include "binder/internal/ParcelFrame.h"
#include "socket/ControlChannel.h"
#include "socket/SocketReference.h"
#include "support/Manners.h"

namespace android::transport {

namespace {

constexpr int kMaxReleasedAtOnce = 16;

SocketReference* referenceOf(const sp<IBinder>& binder) {
    auto* remote = binder->remoteBinder();
    return remote != nullptr ? dynamic_cast<SocketReference*>(&remote->reference()) : nullptr;
}

}  // namespace

SocketRuntime::SocketRuntime()
    : mBudget(gManners.ofDriver ? std::make_unique<BudgetPage>() : nullptr),
      mExports(mBudget.get()),
      mContext{mQuotas, mReactor, mPool, *mStallMonitor, mExports, *this, mBudget.get()} {}

// Without a thread in the reactor nobody sees that references have been let go, so a process that
// gives away one object after the other looks for them as it does. Control sockets only: its
// threads have not been told to serve calls.
void SocketRuntime::closeReleasedExports() {
    if (mPool.isUsed()) {
        return;
    }
    for (int i = 0; i < kMaxReleasedAtOnce; ++i) {
        const std::shared_ptr<EventHandler> handler = mReactor.wait(0);
        if (handler == nullptr) {
            return;
        }
        if (dynamic_cast<ControlChannel*>(handler.get()) != nullptr) {
            mPool.serve(*handler);
        } else {
            mReactor.rearmIfKept(*handler);
        }
    }
}

Fd SocketRuntime::exportNode(BBinder& node, const Destination& to) {
    closeReleasedExports();
    SocketPair pair = makeSocketPair();
    if (!pair.held.valid()) {
        return Fd();
    }
    // Those who hear of the death from another socket may ask the service manager at once.
    if (to.isManager) {
        pair.served = closedFirst(std::move(pair.served));
    }
    const auto control = std::make_shared<ControlChannel>(mContext, std::move(pair.served),
                                                          sp<BBinder>(&node), QuotaCharge());
    return mReactor.add(control) ? std::move(pair.held) : Fd();
}

status_t SocketRuntime::exportOne(const sp<IBinder>& binder, const Destination& to,
                                  Deadline& deadline, NodeId* id, Fd* reference) {
    if (BBinder* local = binder->localBinder()) {
        *id = mExports.of(*local).id;
        *reference = exportNode(*local, to);
    } else {
        auto* known = referenceOf(binder);
        if (known == nullptr) {
            return BAD_TYPE;
        }
        *id = known->id();
        *reference = known->share(to.who, deadline);
    }
    return reference->valid() ? OK : static_cast<status_t>(FAILED_TRANSACTION);
}

status_t SocketRuntime::exportBinders(const Parcel& parcel, Attachments* out, Deadline& deadline,
                                      const Destination& to) {
    const auto& objects = ParcelFrame::objects(parcel);
    if (objects.size() > kMaxObjects) {
        return FAILED_TRANSACTION;
    }
    for (const auto& object : objects) {
        ObjectRecord record = {static_cast<uint32_t>(object.offset), 0, {}};
        Fd reference;
        const status_t status = record.offset % 4 == 0
                                    ? exportOne(object.binder, to, deadline, &record.id, &reference)
                                    : static_cast<status_t>(BAD_VALUE);
        if (status != OK) {
            return status;
        }
        out->records.push_back(record);
        out->fds.push_back(std::move(reference));
    }
    return OK;
}

bool SocketRuntime::importBinders(Envelope& envelope, Parcel& parcel) {
    for (size_t i = 0; i < envelope.header().objectCount; ++i) {
        const ObjectRecord& record = envelope.record(i);
        Fd control = envelope.takeFd(i);
        if (!isPeerSocket(control)) {
            return false;
        }
        sp<IBinder> binder = mExports.find(record.id);
        if (binder == nullptr) {
            binder = mImports.proxyOf(record.id, std::move(control));
        }
        ParcelFrame(parcel).attach(record.offset, binder);
    }
    return true;
}

sp<IBinder> SocketRuntime::proxyOfManager(Fd control) {
    return mImports.proxyOf(makeNodeId(), std::move(control), true);
}

}  // namespace android::transport
