// SPDX-License-Identifier: Apache-2.0
#include "support/ForkGuard.h"

#include <pthread.h>

#include <atomic>

#include "support/Log.h"

namespace android::transport {

namespace {

// Read in a forked child, where a lock could be held for ever.
std::atomic<bool> gForked{false};
std::atomic<bool> gSaid{false};
std::atomic<void (*)()> gInChild{nullptr};

void enterChild() {
    gForked = true;
    gInChild.load()();
}

}  // namespace

void armForkGuard(void (*inChild)()) {
    gInChild = inChild;
    // Only fails for want of memory at start-up; the children are then merely not warned.
    (void)pthread_atfork(nullptr, nullptr, &enterChild);
}

bool isForkedChild() {
    return gForked.load(std::memory_order_relaxed);
}

bool refusedAfterFork() {
    if (!isForkedChild()) {
        return false;
    }
    if (!gSaid.exchange(true)) {
        logLine(
            "this process was forked from one that had used the binder runtime, and cannot use "
            "it: start a new program instead");
    }
    return true;
}

}  // namespace android::transport
