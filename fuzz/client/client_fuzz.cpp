// SPDX-License-Identifier: Apache-2.0
// The client that a process has, and a service that answers with any bytes, tells of anything at
// any time, dies, comes back, and dies late: each operation asks for what it should and gives what
// its comment says for the replies that came, the application is told each event once, and nothing
// stays. All on one thread: what happens meanwhile, happens inside the requests.
#include <ttscommon/ttscommon.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>

#include "fuzz/client/Application.h"

// The client waits in one place, and nobody needs to.
extern "C" int usleep(useconds_t) {
    return 0;
}

void dbgPrint(int, const char* format, ...) {
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    (void)vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    voxtrel_fuzz::Input input(data, size);
    voxtrel_fuzz::Application(input).run();
    return 0;
}
