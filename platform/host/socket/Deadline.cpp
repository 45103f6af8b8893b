// SPDX-License-Identifier: Apache-2.0
#include "socket/Deadline.h"

#include <poll.h>

#include <cerrno>

namespace android::transport {

namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

bool Deadline::wait(const PollTarget& target) {
    const auto now = Clock::now();
    if (mDeadline == Clock::time_point{}) {
        mDeadline = now + std::chrono::milliseconds(mMilliseconds);
    }
    // Rounded up, or the last millisecond would be a busy loop.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(mDeadline - now).count();
    if (left <= 0) {
        return false;
    }
    pollfd request = {target.fd, target.events, 0};
    return poll(&request, 1, static_cast<int>(left)) >= 0 || errno == EINTR;
}

}  // namespace android::transport
