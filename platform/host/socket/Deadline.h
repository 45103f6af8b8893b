// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_DEADLINE_H
#define VOXTREL_SOCKET_DEADLINE_H

#include <chrono>

#include "utils/Errors.h"

namespace android::transport {

/// How long a sender waits at most for other processes, in all its waits for one call.
constexpr int kSendTimeoutMs = 100;

/// What an attempt has to wait for: a descriptor and one of these events of poll(2).
struct PollTarget {
    int fd = -1;
    short events = 0;
};

/// How long a caller that has waited for a reply waits at most to hear why there is none.
constexpr int kEndTimeoutMs = 1000;

/// The time that one call may spend on waiting; it begins with the first wait.
class Deadline {
public:
    explicit Deadline(int milliseconds = kSendTimeoutMs) : mMilliseconds(milliseconds) {}

    /// Waits until the target may be ready; false when the time is up.
    bool wait(const PollTarget& target);

private:
    const int mMilliseconds;
    std::chrono::steady_clock::time_point mDeadline{};
};

/// Attempts again and again as long as there is something to wait for: `FAILED_TRANSACTION` when
/// the deadline passes, else what `attempt` said. `attempt` names the target when it gives
/// `WOULD_BLOCK`.
template <typename Attempt>
status_t retryUntil(Deadline& deadline, Attempt attempt) {
    PollTarget target;
    status_t status = attempt(target);
    while (status == WOULD_BLOCK) {
        const bool more = deadline.wait(target);
        status = attempt(target);
        if (!more && status == WOULD_BLOCK) {
            status = FAILED_TRANSACTION;
        }
    }
    return status;
}

}  // namespace android::transport

#endif
