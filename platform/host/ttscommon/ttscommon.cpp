// SPDX-License-Identifier: Apache-2.0
#include "ttscommon/ttscommon.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

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

}  // namespace

const char* INI_LANGUAGE_WITH_VOICES = environment("VOXTREL_LANGUAGE_WITH_VOICES", "");

void dbgPrint(int level, const char* fmt, ...) {
    if (level > threshold()) {
        return;
    }
    va_list arguments;
    va_start(arguments, fmt);
    // A line that cannot be written is lost: there is nowhere to say so.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start is two lines up
    (void)std::vfprintf(stderr, fmt, arguments);
    va_end(arguments);
}
