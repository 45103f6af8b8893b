// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_LOG_H
#define VOXTREL_SUPPORT_LOG_H

#include <atomic>
#include <chrono>
#include <string>

#include "support/LogLevel.h"
#include "utils/Mutex.h"

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
    constexpr explicit LogAllowance(int most = kLines) : mMax(most), mUsed(most) {}

    /// -1: not this one. Else how many before it were refused.
    int take(Time now);

private:
    const int mMax;
    Time mBegin{};
    int mUsed;
    int mRefused = 0;
};

/// Lines on standard error, each in one piece. Whoever reads there neither ends nor stops this
/// process: a line that finds no room for `kTimeout` is left out, those behind it at once until
/// there is room again, and no SIGPIPE is raised. How many were left out is said with the next
/// line. Called on: any thread.
class LineLog {
public:
    static constexpr std::chrono::milliseconds kTimeout{20};

    /// At most `most` lines of `writeLimited` a period.
    constexpr explicit LineLog(int most = LogAllowance::kLines) : mAllowance(most) {}

    /// `name` goes in front of the line.
    void write(const std::string& name, const std::string& text,
               LogLevel level = LogLevel::Warning);
    /// The same for what others can cause again and again.
    void writeLimited(const std::string& name, const std::string& text,
                      LogLevel level = LogLevel::Warning);
    /// The text as it is, with nothing in front and no line end added; `name` is for the line that
    /// says how many were left out.
    void writeAsItIs(const std::string& name, const std::string& text, LogLevel level);

private:
    int take();
    void put(const std::string& name, const std::string& line, LogLevel level, int refused);

    Mutex mLock;
    LogAllowance mAllowance PLATFORM_GUARDED_BY(mLock);
    std::atomic<int> mLost{0};
};

}  // namespace android::transport

#endif
