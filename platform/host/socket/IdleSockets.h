// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_IDLESOCKETS_H
#define VOXTREL_SOCKET_IDLESOCKETS_H

#include <vector>

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
        if (mSockets.empty()) {
            return Fd();
        }
        Fd socket = std::move(mSockets.back());
        mSockets.pop_back();
        return socket;
    }
    /// Closed when there are enough.
    void giveBack(Fd socket) PLATFORM_EXCLUDES(mLock) {
        Mutex::Autolock held(mLock);
        if (mSockets.size() < kMax) {
            mSockets.push_back(std::move(socket));
        }
    }

private:
    Mutex mLock;
    std::vector<Fd> mSockets PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
