// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Transport.h"
#include "socket/SocketTransport.h"
#include "support/Fd.h"
#include "support/ForkGuard.h"

namespace android::transport {

namespace {

// The one place that knows which transports there are.
Transport* makeTransport() {
    armForkGuard(&Fd::closeAll);
    return new SocketTransport();
}

}  // namespace

Transport& transport() {
    static Transport* const instance = makeTransport();
    return *instance;
}

}  // namespace android::transport
