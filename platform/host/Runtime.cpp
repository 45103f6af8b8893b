// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "binder/transport/Transport.h"
#include "kernel/DriverTransport.h"
#include "socket/SocketTransport.h"
#include "support/Fd.h"
#include "support/ForkGuard.h"

namespace android::transport {

namespace {

// The one place that knows which transports there are.
Transport* makeTransport() {
    armForkGuard(&Fd::closeAll);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): read once, at the first use
    const char* const driver = std::getenv("VOXTREL_BINDER_DRIVER");
    if (driver == nullptr || *driver == '\0') {
        return new SocketTransport();
    }
    // Never destroyed: threads use it while the process exits.
    return kernel::DriverTransport::open(*new kernel::SystemCalls(), driver);
}

}  // namespace

Transport& transport() {
    static Transport* const instance = makeTransport();
    return *instance;
}

}  // namespace android::transport
