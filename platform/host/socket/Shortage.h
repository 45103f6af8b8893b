// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SHORTAGE_H
#define VOXTREL_SOCKET_SHORTAGE_H

#include <poll.h>

#include <cerrno>

namespace android::transport {

/// A kernel without memory for a message, which is asked a few times more.
class Shortage {
public:
    /// After a system call that failed: whether it is to be made again. Waits before it is.
    bool mayPass() {
        if ((errno != ENOBUFS && errno != ENOMEM) || mLeft == 0) {
            return false;
        }
        --mLeft;
        (void)poll(nullptr, 0, kPauseMs);
        return true;
    }

private:
    static constexpr int kPauseMs = 2;
    int mLeft = 5;
};

}  // namespace android::transport

#endif
