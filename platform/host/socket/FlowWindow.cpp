// SPDX-License-Identifier: Apache-2.0
#include "socket/FlowWindow.h"

namespace android::transport {

void FlowWindow::noteSent(size_t bytes) {
    mBytesSent += static_cast<uint32_t>(bytes);
    mBytesUpTo[++mSent % kRemembered] = mBytesSent;
}

void FlowWindow::noteDone(uint32_t done) {
    uint32_t known = mDone.load();
    while (static_cast<int32_t>(done - known) > 0 && !mDone.compare_exchange_weak(known, done)) {
    }
}

bool FlowWindow::mayGoBehind() const {
    const uint32_t ahead = mSent - mDone.load();
    return ahead == 0 || (ahead <= kMaxAhead &&
                          mBytesSent - mBytesUpTo[(mSent - ahead) % kRemembered] <= kMaxBytesAhead);
}

}  // namespace android::transport
