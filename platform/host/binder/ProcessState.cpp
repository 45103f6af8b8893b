// SPDX-License-Identifier: Apache-2.0
#include "binder/ProcessState.h"

namespace android {

sp<ProcessState> ProcessState::self() {
    static const auto* const state = new sp<ProcessState>(new ProcessState());
    return *state;
}

void ProcessState::startThreadPool() {}

status_t ProcessState::setThreadPoolMaxThreadCount(size_t /*maxThreads*/) {
    return OK;
}

}  // namespace android
