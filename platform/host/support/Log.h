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

/// The same for warnings of what others can cause again and again: a few lines a second, with the
/// number of those that were dropped, and none where $VOXTREL_LOG_LEVEL asks for errors alone.
void logLimited(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Limits the lines a period. Called on: one thread at a time.
class LogRateLimit {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr int kLines = 10;
    static constexpr std::chrono::seconds kPeriod{1};

    constexpr explicit LogRateLimit(int maxLines = kLines) : mMax(maxLines), mUsed(maxLines) {}

    /// -1 to drop this line, else how many were dropped before it.
    int take(Time now);

private:
    const int mMax;
    Time mBegin{};
    int mUsed;
    int mRefused = 0;
};

/// Lines on standard error, each in one piece. A reader that stops or goes away does not block or
/// end this process: a line is dropped when there is no room for it within `kTimeout`, those behind
/// it at once until there is room again, and no SIGPIPE is raised. The next line says how many were
/// dropped. Called on: any thread.
class LineLog {
public:
    static constexpr std::chrono::milliseconds kTimeout{20};

    /// At most `maxLines` of `writeLimited` a period.
    constexpr explicit LineLog(int maxLines = LogRateLimit::kLines) : mRateLimit(maxLines) {}

    /// `name` goes in front of the line.
    void write(const std::string& name, const std::string& text,
               LogLevel level = LogLevel::Warning);
    /// The same, subject to the rate limit.
    void writeLimited(const std::string& name, const std::string& text,
                      LogLevel level = LogLevel::Warning);
    /// The text as it is, without prefix or line end; `name` is for the line that says how many
    /// were dropped.
    void writeAsItIs(const std::string& name, const std::string& text, LogLevel level);

private:
    int take();
    void put(const std::string& name, const std::string& line, LogLevel level, int refused);

    Mutex mLock;
    LogRateLimit mRateLimit PLATFORM_GUARDED_BY(mLock);
    std::atomic<int> mLost{0};
};

}  // namespace android::transport

#endif
