// SPDX-License-Identifier: Apache-2.0
#include "ttscommon/ttscommon.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "binder/transport/LogLevel.h"

namespace {

const char* environment(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read while loading
    return value != nullptr ? value : otherwise;
}

int threshold() {
    static const int level =
        static_cast<int>(std::strtol(environment("VOXTREL_LOG_LEVEL", "0"), nullptr, 10));
    return level;
}

android::transport::LogLevel clamped(int level) {
    using android::transport::LogLevel;
    return level < 0    ? LogLevel::Error
           : level == 0 ? LogLevel::Warning
           : level == 1 ? LogLevel::Info
                        : LogLevel::Debug;
}

}  // namespace

const char* INI_LANGUAGE_WITH_VOICES = environment("VOXTREL_LANGUAGE_WITH_VOICES", "");

void dbgPrint(int level, const char* fmt, ...) {
    if (level > threshold()) {
        return;
    }
    const std::string format = std::string(android::transport::journalPrefix(clamped(level))) + fmt;
    va_list arguments;
    va_start(arguments, fmt);
    // A line that cannot be written is lost: there is nowhere to say so.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start is in this function
    (void)std::vfprintf(stderr, format.c_str(), arguments);
    va_end(arguments);
}
