// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <cstdio>
#include <string>

#include "binder/IPCThreadState.h"
#include "binder/ProcessState.h"
#include "binder/transport/Log.h"
#include "servicemanager/Registry.h"
#include "utils/Mutex.h"

namespace {

// A line for each change, but anybody may add a service over and over: as many lines a second as
// when every name that there can be comes and goes.
constexpr int kMostLines = 2048;

struct Lines {
    android::Mutex lock;
    android::transport::LogAllowance allowance PLATFORM_GUARDED_BY(lock){kMostLines};
};

int takeLine() {
    static auto* const lines = new Lines();
    android::Mutex::Autolock held(lines->lock);
    return lines->allowance.take(std::chrono::steady_clock::now());
}

void print(const std::string& line) {
    (void)std::fprintf(stderr, "voxtrel-servicemanager: %s\n", line.c_str());
}

void report(const std::string& line) {
    const int refused = takeLine();
    if (refused > 0) {
        print(std::to_string(refused) + " lines were left out");
    }
    if (refused >= 0) {
        print(line);
    }
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
