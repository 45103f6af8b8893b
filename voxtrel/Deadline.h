// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_DEADLINE_H
#define VOXTREL_DEADLINE_H

#include <algorithm>
#include <chrono>

namespace voxtrel {

/// The moment that is `timeout` from now; at most a year, lest the sum overflows.
inline std::chrono::steady_clock::time_point deadlineAfter(std::chrono::milliseconds timeout) {
    constexpr std::chrono::milliseconds kNone(0);
    constexpr std::chrono::milliseconds kYear = std::chrono::hours(24 * 365);
    return std::chrono::steady_clock::now() + std::clamp(timeout, kNone, kYear);
}

}  // namespace voxtrel

#endif
