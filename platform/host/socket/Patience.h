// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_PATIENCE_H
#define VOXTREL_SOCKET_PATIENCE_H

#include <chrono>

#include "utils/Errors.h"

namespace android::transport {

/// How long a sender waits at most for other processes, all its waits for one call together.
constexpr int kPatienceMs = 100;

/// What an attempt came up against: a descriptor that shows none of these events of poll(2) yet.
struct Obstacle {
    int fd = -1;
    short events = 0;
};

/// How long a caller that has waited for a reply waits at most to hear why there is none.
constexpr int kReplyPatienceMs = 1000;

/// The time that one call may spend on waiting; it begins with the first wait.
class Patience {
public:
    explicit Patience(int milliseconds = kPatienceMs) : mMilliseconds(milliseconds) {}

    /// Waits until the obstacle may be gone; false when the time is up.
    bool wait(const Obstacle& obstacle);

private:
    const int mMilliseconds;
    std::chrono::steady_clock::time_point mDeadline{};
};

/// Attempts again and again as long as there is an obstacle: `FAILED_TRANSACTION` when patience
/// ends, else what `attempt` said. `attempt` names the obstacle when it gives `WOULD_BLOCK`.
template <typename Attempt>
status_t patiently(Patience& patience, Attempt attempt) {
    Obstacle obstacle;
    status_t status = attempt(obstacle);
    while (status == WOULD_BLOCK) {
        const bool more = patience.wait(obstacle);
        status = attempt(obstacle);
        if (!more && status == WOULD_BLOCK) {
            status = FAILED_TRANSACTION;
        }
    }
    return status;
}

}  // namespace android::transport

#endif
