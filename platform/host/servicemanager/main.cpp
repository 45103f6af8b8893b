// SPDX-License-Identifier: Apache-2.0
#include <string>

#include "binder/IPCThreadState.h"
#include "binder/ProcessState.h"
#include "binder/transport/Log.h"
#include "servicemanager/Registry.h"

namespace {

// A line for each change, but anybody may add a service over and over: as many lines a second as
// when every name that there can be comes and goes.
constexpr int kMostLines = 2048;

android::transport::LineLog gLog{kMostLines};

void report(const std::string& line) {
    gLog.writeLimited("voxtrel-servicemanager", line);
}

}  // namespace

int main() {
    const android::sp<android::Registry> registry = new android::Registry(report);
    android::IPCThreadState::self()->setTheContextObject(registry);
    if (!android::ProcessState::self()->becomeContextManager()) {
        return 1;
    }
    android::ProcessState::self()->startThreadPool();
    report("ready");
    android::IPCThreadState::self()->joinThreadPool();
    return 0;
}
