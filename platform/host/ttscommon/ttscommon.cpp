// SPDX-License-Identifier: Apache-2.0
#include "ttscommon/ttscommon.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "support/Log.h"

namespace {

// Constant-initialised: a child may be forked, and log, while its parent logs its first line.
android::transport::LineLog gLog;

const char* environment(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read while loading
    return value != nullptr ? value : otherwise;
}

android::transport::LogLevel clamped(int level) {
    using android::transport::LogLevel;
    return level < 0    ? LogLevel::Error
           : level == 0 ? LogLevel::Warning
           : level == 1 ? LogLevel::Info
                        : LogLevel::Debug;
}

std::string formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start is in the caller
    const int size = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(size > 0 ? static_cast<size_t>(size) : 0, '\0');
    (void)std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

}  // namespace

const char* INI_LANGUAGE_WITH_VOICES = environment("VOXTREL_LANGUAGE_WITH_VOICES", "");

void dbgPrint(int level, const char* fmt, ...) {
    if (level > android::transport::logThreshold()) {
        return;
    }
    va_list arguments;
    va_start(arguments, fmt);
    try {
        gLog.writeAsItIs(program_invocation_short_name, formatted(fmt, arguments), clamped(level));
    } catch (const std::bad_alloc&) {
        // Without memory the line is lost, and nothing else is.
    }
    va_end(arguments);
}
