// SPDX-License-Identifier: Apache-2.0
#include "binder/ProcessState.h"

#include "binder/transport/Transport.h"

namespace android {

sp<ProcessState> ProcessState::self() {
    static const auto* const state = new sp<ProcessState>(new ProcessState());
    return *state;
}

void ProcessState::startThreadPool() {
    transport::transport().startThreads();
}

status_t ProcessState::setThreadPoolMaxThreadCount(size_t maxThreads) {
    transport::transport().setMaxThreads(maxThreads);
    return OK;
}

sp<IBinder> ProcessState::getContextObject(const sp<IBinder>& /*caller*/) {
    return transport::transport().contextObject();
}

bool ProcessState::becomeContextManager() {
    sp<BBinder> manager;
    {
        Mutex::Autolock held(mLock);
        manager = mOffered;
    }
    return manager != nullptr && transport::transport().becomeContext(manager);
}

void ProcessState::offerContextObject(const sp<BBinder>& manager) {
    Mutex::Autolock held(mLock);
    mOffered = manager;
}

}  // namespace android
