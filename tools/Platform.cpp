// SPDX-License-Identifier: Apache-2.0
#include "tools/Platform.h"

#include <cstdlib>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

namespace voxtrelctl {

void startBinderThreads() {
    android::ProcessState::self()->startThreadPool();
}

android::sp<android::IBinder> findService() {
    return android::defaultServiceManager()->getService(android::String16(kServiceName));
}

bool isServiceRegistered() {
    return findService() != nullptr;
}

bool isServiceManagerThere() {
    const auto manager = android::IInterface::asBinder(android::defaultServiceManager());
    // A manager of this process alone, which a platform may put in the place of an absent one,
    // knows no service of another process.
    return manager != nullptr && manager->remoteBinder() != nullptr &&
           manager->pingBinder() == android::OK;
}

void quietLog(bool verbose) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has been started
    (void)setenv("VOXTREL_LOG_LEVEL", verbose ? "2" : "-1", 0);
}

}  // namespace voxtrelctl
