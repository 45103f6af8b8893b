// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_FLOWWINDOW_H
#define VOXTREL_SOCKET_FLOWWINDOW_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "socket/Wire.h"

namespace android::transport {

/// How many one-way calls a sender has ahead of its next call, and whether a large one is among
/// them: sent, and not known to be done. Numbers wrap around.
///
/// Called on: any thread `noteDone`; one thread at a time the rest. Locks: none.
class FlowWindow {
public:
    void noteSent(size_t bytes) {
        ++mSent;
        mLastLarge = bytes > kMaxBytesOfOneAhead ? mSent : mLastLarge;
    }
    /// A reply says that so many are done in all. Replies may be read in another order than they
    /// were written.
    void noteDone(uint32_t done) {
        uint32_t known = mDone;
        while (static_cast<int32_t>(done - known) > 0 &&
               !mDone.compare_exchange_weak(known, done)) {
        }
    }

    bool allDone() const { return mSent == mDone.load(); }
    /// May a two-way call go behind them? With more ahead than `kMaxAhead`, or one larger than
    /// `kMaxBytesOfOneAhead`, the other side may not be reading (see OneWayQueue).
    bool mayGoBehind() const {
        const uint32_t ahead = mSent - mDone;
        return ahead <= kMaxAhead && mSent - mLastLarge >= ahead;
    }

private:
    uint32_t mSent = 0;
    uint32_t mLastLarge = 0;  // by its number
    std::atomic<uint32_t> mDone{0};
};

}  // namespace android::transport

#endif
