// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Log.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>

namespace android::transport {

void logLine(const char* format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(text, sizeof(text), format, arguments);  // a longer line is cut
    va_end(arguments);
    (void)std::fprintf(stderr, "binder[%d]: %s\n", static_cast<int>(getpid()), text);
}

}  // namespace android::transport
