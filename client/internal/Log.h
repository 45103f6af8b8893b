// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_INTERNAL_LOG_H
#define VOXTREL_CLIENT_INTERNAL_LOG_H

#include <ttscommon/ttscommon.h>

/// Frames the format of a warning or debug trace in the terminal colours that mark it. A macro,
/// because the formats are joined as string literals.
#define VOXTREL_DEBUG_LINE(format) "\033[1;33;40m >>>>Debug<<<< " format " \033[0m\n"

namespace TTS {

constexpr int kLogWarning = 0;   ///< `dbgPrint` level of the connection's warnings
constexpr int kLogRejected = 1;  ///< level of refused parameters and features
constexpr int kLogTrace = 2;     ///< level of call traces

/// Logs the trace of a call without arguments.
void traceCall(const char* operation);

/// Logs that a feature is missing or switched off.
void logNotSupported();

/// Writes a death notifier's line to standard output; `line` tells the two notifiers apart.
void printDeath(int line);

}  // namespace TTS

#endif
