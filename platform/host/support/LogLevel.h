// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_LOGLEVEL_H
#define VOXTREL_SUPPORT_LOGLEVEL_H

namespace android::transport {

/// How much a line matters; the numbers are those of `dbgPrint` and of $VOXTREL_LOG_LEVEL.
enum class LogLevel { Error = -1, Warning = 0, Info = 1, Debug = 2 };

/// $VOXTREL_LOG_LEVEL as it is when this is first called, or 0: lines of higher levels are not
/// written. Called on: any thread.
int logThreshold();

/// What the journal takes a line's level from ("<4>" for a warning) when standard error is the
/// journal's, as it is in a service that systemd has started; else the empty text.
/// Called on: any thread.
const char* journalPrefix(LogLevel level);

}  // namespace android::transport

#endif
