// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SOCKETRUNTIME_H
#define VOXTREL_SOCKET_SOCKETRUNTIME_H

#include <memory>

#include "socket/BinderTranslator.h"
#include "socket/Context.h"
#include "socket/DrainingSocket.h"
#include "socket/ExportTable.h"
#include "socket/ImportTable.h"
#include "socket/Quota.h"
#include "socket/Reactor.h"
#include "socket/StallMonitor.h"
#include "socket/ThreadPool.h"
#include "support/BudgetPage.h"

namespace android::transport {

/// Owns what the parts of the transport share, and translates binders by its tables. It outlives
/// every proxy that it has made and every object that it has exported; the transport's is never
/// destroyed.
///
/// Called on: any thread.
class SocketRuntime final : public BinderTranslator {
public:
    SocketRuntime();
    SocketRuntime(const SocketRuntime&) = delete;
    SocketRuntime& operator=(const SocketRuntime&) = delete;

    const Context& context() const { return mContext; }

    /// The proxy of the service manager's node, whose reference has no name that others know.
    sp<IBinder> proxyOfManager(Fd control);

    status_t exportBinders(const Parcel& parcel, Attachments* out, Deadline& deadline,
                           const Destination& to) override;
    bool importBinders(Envelope& envelope, Parcel& parcel) override;

private:
    status_t exportOne(const sp<IBinder>& binder, const Destination& to, Deadline& deadline,
                       NodeId* id, Fd* reference);
    Fd exportNode(BBinder& node, const Destination& to);
    void closeReleasedExports();

    // What the handlers in the reactor use comes before it.
    Quotas mQuotas;
    const std::unique_ptr<BudgetPage> mBudget;
    ExportTable mExports;
    Reactor mReactor;
    ThreadPool mPool{mReactor};
    const std::shared_ptr<StallMonitor> mStallMonitor = std::make_shared<StallMonitor>(mReactor);
    DrainingSockets mDraining;
    const Context mContext;
    ImportTable mImports{mContext, mDraining};
};

}  // namespace android::transport

#endif
