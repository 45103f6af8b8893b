// SPDX-License-Identifier: Apache-2.0
#include "kernel/ThreadStarter.h"

#include <cstring>
#include <utility>

#include "support/Log.h"

namespace android::kernel {

void ThreadStarter::start(std::function<void()> body) {
    const int error = mSystem.startThread(body);
    if (error != 0) {
        transport::logLimited("cannot start another thread: %s: it is tried again",
                              strerrordesc_np(error));
        Mutex::Autolock held(mLock);
        mUnstarted.push_back(std::move(body));
        mHasUnstarted = true;
    }
}

void ThreadStarter::retry() {
    if (!mHasUnstarted) {
        return;
    }
    std::vector<std::function<void()>> bodies;
    {
        Mutex::Autolock held(mLock);
        bodies.swap(mUnstarted);
        mHasUnstarted = false;
    }
    for (std::function<void()>& body : bodies) {
        start(std::move(body));
    }
}

}  // namespace android::kernel
