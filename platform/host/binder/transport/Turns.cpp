// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Turns.h"

#include <utility>

#include "binder/transport/LaneEnd.h"

namespace android::transport {

bool Turns::enter(Turn& turn) {
    Mutex::Autolock held(mLock);
    if (mBusy) {
        mWaiting.push_back(std::move(turn));
        return false;
    }
    mBusy = true;
    return true;
}

std::optional<Turn> Turns::leave() {
    Mutex::Autolock held(mLock);
    if (mWaiting.empty()) {
        mBusy = false;
        return std::nullopt;
    }
    Turn next = std::move(mWaiting.front());
    mWaiting.pop_front();
    return next;
}

}  // namespace android::transport
