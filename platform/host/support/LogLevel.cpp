// SPDX-License-Identifier: Apache-2.0
#include "support/LogLevel.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace android::transport {

namespace {

// $JOURNAL_STREAM is inherited by processes whose standard error has been sent elsewhere since, so
// it counts only when it names the very file.
bool isJournal() {
    const char* stream = std::getenv("JOURNAL_STREAM");  // NOLINT(concurrency-mt-unsafe): read only
    struct stat status {};
    return stream != nullptr && fstat(STDERR_FILENO, &status) == 0 &&
           stream == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

}  // namespace

int logThreshold() {
    static const int level = [] {
        const char* text = std::getenv("VOXTREL_LOG_LEVEL");  // NOLINT(concurrency-mt-unsafe): once
        return text != nullptr ? static_cast<int>(std::strtol(text, nullptr, 10)) : 0;
    }();
    return level;
}

const char* journalPrefix(LogLevel level) {
    static const bool journal = isJournal();
    if (!journal) {
        return "";
    }
    switch (level) {
        case LogLevel::Error:
            return "<3>";
        case LogLevel::Warning:
            return "<4>";
        case LogLevel::Info:
            return "<6>";
        default:
            return "<7>";
    }
}

}  // namespace android::transport
