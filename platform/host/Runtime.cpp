// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "binder/BinderDriver.h"
#include "binder/transport/Transport.h"
#include "kernel/DriverTransport.h"
#include "socket/SocketTransport.h"
#include "support/Fd.h"
#include "support/ForkGuard.h"

namespace android {

const std::string& binderDriver() {
    static const std::string* const path = [] {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): read once, at the first use
        const char* const value = std::getenv("VOXTREL_BINDER_DRIVER");
        return new std::string(value != nullptr ? value : "");
    }();
    return *path;
}

namespace transport {

namespace {

// The one place that knows which transports there are.
Transport* makeTransport() {
    armForkGuard(&Fd::closeAll);
    if (binderDriver().empty()) {
        return new SocketTransport();
    }
    // Never destroyed: threads use it while the process exits.
    static auto* const system = new kernel::SystemCalls();
    return kernel::DriverTransport::open(*system, binderDriver());
}

}  // namespace

Transport& transport() {
    static Transport* const instance = makeTransport();
    return *instance;
}

}  // namespace transport

}  // namespace android
