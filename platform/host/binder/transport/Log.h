// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_LOG_H
#define VOXTREL_BINDER_TRANSPORT_LOG_H

#include <chrono>

namespace android::transport {

/// One line of the runtime on standard error, with the program's process id in front.
void logLine(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// The same for what others can cause again and again: a few lines a second, and how many were left
/// out.
void logLimited(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// How many lines may be written. Called on: one thread at a time.
class LogAllowance {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr int kLines = 10;
    static constexpr std::chrono::seconds kPeriod{1};

    /// At most `most` lines a period.
    explicit LogAllowance(int most = kLines) : mMost(most), mUsed(most) {}

    /// -1: not this one. Else how many before it were refused.
    int take(Time now);

private:
    const int mMost;
    Time mBegin{};
    int mUsed;
    int mRefused = 0;
};

}  // namespace android::transport

#endif
