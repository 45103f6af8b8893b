// SPDX-License-Identifier: Apache-2.0
#include "kernel/ThreadStarter.h"

#include <cstring>
#include <utility>

#include "support/Log.h"

namespace android::kernel {

void ThreadStarter::start(std::function<void()> body) {
    const int error = mSystem.startThread(std::move(body));
    if (error != 0) {
        transport::logLimited("cannot start another thread: %s", strerrordesc_np(error));
    }
}

}  // namespace android::kernel
