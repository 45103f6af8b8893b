// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Log.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "utils/Mutex.h"

namespace android::transport {

namespace {

struct Limited {
    Mutex lock;
    LogAllowance allowance PLATFORM_GUARDED_BY(lock);
};

int takeLine() {
    static auto* const limited = new Limited();
    Mutex::Autolock held(limited->lock);
    return limited->allowance.take(std::chrono::steady_clock::now());
}

void write(const char* format, va_list arguments) {
    char text[512];
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start is two lines up
    (void)std::vsnprintf(text, sizeof(text), format, arguments);  // a longer line is cut
    (void)std::fprintf(stderr, "binder[%d]: %s\n", static_cast<int>(getpid()), text);
}

}  // namespace

int LogAllowance::take(Time now) {
    if (mUsed >= mMost && now - mBegin >= kPeriod) {
        mBegin = now;
        mUsed = 0;
    }
    if (mUsed >= mMost) {
        ++mRefused;
        return -1;
    }
    ++mUsed;
    return std::exchange(mRefused, 0);
}

void logLine(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write(format, arguments);
    va_end(arguments);
}

void logLimited(const char* format, ...) {
    const int refused = takeLine();
    if (refused < 0) {
        return;
    }
    if (refused > 0) {
        logLine("%d lines were left out", refused);
    }
    va_list arguments;
    va_start(arguments, format);
    write(format, arguments);
    va_end(arguments);
}

}  // namespace android::transport
