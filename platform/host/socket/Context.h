// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_CONTEXT_H
#define VOXTREL_SOCKET_CONTEXT_H

namespace android::transport {

class BinderTranslator;
class BudgetPage;
class ExportTable;
class Quotas;
class Reactor;
class StallMonitor;
class ThreadPool;

/// What the parts of the transport share, and hand on to what they make. `SocketRuntime` owns all
/// of it, and outlives them.
struct Context {
    Quotas& quotas;
    Reactor& reactor;
    ThreadPool& pool;
    StallMonitor& stallMonitor;
    ExportTable& exports;
    BinderTranslator& translator;
    /// This process's own, as the receiver of calls; null but in the manners of a driver.
    BudgetPage* budget;
};

}  // namespace android::transport

#endif
