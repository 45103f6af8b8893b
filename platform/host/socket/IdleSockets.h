// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_IDLESOCKETS_H
#define VOXTREL_SOCKET_IDLESOCKETS_H

#include <array>
#include <cstddef>
#include <utility>

#include "support/Fd.h"
#include "utils/Mutex.h"

namespace android::transport {

/// Sockets for two-way calls that no call uses now, at most `kMax`. Called on: any thread.
class IdleSockets {
public:
    static constexpr size_t kMax = 16;

    /// The one that was used last, whose owner's thread may still be waiting on it; invalid when
    /// there is none.
    Fd take() PLATFORM_EXCLUDES(mLock) {
        Mutex::Autolock held(mLock);
        return mCount != 0 ? std::move(mSockets[--mCount]) : Fd();
    }
    /// Closed when there are enough.
    void giveBack(Fd socket) PLATFORM_EXCLUDES(mLock) {
        Mutex::Autolock held(mLock);
        if (mCount < kMax) {
            mSockets[mCount++] = std::move(socket);
        }
    }

private:
    Mutex mLock;
    // In place: a call that has been carried out must not fail for want of memory here.
    std::array<Fd, kMax> mSockets PLATFORM_GUARDED_BY(mLock);
    size_t mCount PLATFORM_GUARDED_BY(mLock) = 0;
};

}  // namespace android::transport

#endif
