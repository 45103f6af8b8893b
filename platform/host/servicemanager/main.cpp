// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <string>

#include "binder/IPCThreadState.h"
#include "binder/ProcessState.h"
#include "servicemanager/Registry.h"

namespace {

void report(const std::string& line) {
    (void)std::fprintf(stderr, "voxtrel-servicemanager: %s\n", line.c_str());
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
