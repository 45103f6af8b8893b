// SPDX-License-Identifier: Apache-2.0
#include "socket/IdleSockets.h"

namespace android::transport {

Fd IdleSockets::take() {
    Mutex::Autolock held(mLock);
    if (mSockets.empty()) {
        return Fd();
    }
    Fd socket = std::move(mSockets.back());
    mSockets.pop_back();
    return socket;
}

void IdleSockets::giveBack(Fd socket) {
    Mutex::Autolock held(mLock);
    if (mSockets.size() < kMax) {
        mSockets.push_back(std::move(socket));
    }
}

}  // namespace android::transport
