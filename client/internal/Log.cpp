// SPDX-License-Identifier: Apache-2.0
#include "client/internal/Log.h"

#include <cstdio>

#include "ipc/BinderHeaders.h"

namespace TTS {

void traceCall(const char* operation) {
    dbgPrint(kLogTrace, "[Client] %s()\n", operation);
}

void logNotSupported() {
    dbgPrint(kLogRejected, " Not Support \n");
}

void printDeath(int line) {
    std::printf(VOXTREL_DEBUG_LINE("binderDied, line = %d"), line);
}

}  // namespace TTS
