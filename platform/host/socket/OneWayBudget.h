// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_ONEWAYBUDGET_H
#define VOXTREL_SOCKET_ONEWAYBUDGET_H

#include <memory>

#include "socket/Wire.h"
#include "support/BudgetPage.h"
#include "support/Fd.h"
#include "utils/Mutex.h"

namespace android::transport {

/// The budget of the process that a reference leads to, asked for through the control socket.
/// Called on: any thread. Locks: its own, also while it waits for the first answer.
class PeerBudget {
public:
    /// Null while the process has not said, or when it keeps none. The first call waits for the
    /// answer, for `kSendTimeoutMs` at most; the others take what is there.
    BudgetPage* find(const Fd& control) PLATFORM_EXCLUDES(mLock);

private:
    void ask(const Fd& control) PLATFORM_REQUIRES(mLock);
    void readAnswer() PLATFORM_REQUIRES(mLock);

    Mutex mLock;
    bool mAsked PLATFORM_GUARDED_BY(mLock) = false;
    Fd mAnswer PLATFORM_GUARDED_BY(mLock);
    std::unique_ptr<BudgetPage> mBudget PLATFORM_GUARDED_BY(mLock);
};

/// Is this call counted in this process's budget? Never in the default manners.
bool isCounted(const Header& oneWay);

}  // namespace android::transport

#endif
