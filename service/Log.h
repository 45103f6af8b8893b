// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_LOG_H
#define VOXTREL_SERVICE_LOG_H

#include <functional>
#include <optional>
#include <string>

namespace voxtreld {

/// How much a line matters; the numbers are those of `dbgPrint`.
enum class LogLevel { Error = -1, Warning = 0, Info = 1, Debug = 2 };

/// Takes one line, without a line end. Called on: any thread.
using Log = std::function<void(LogLevel level, const std::string& line)>;

/// Chooses what is logged: `asked`, else what $VOXTREL_LOG_LEVEL says, else Info. Call it before
/// anything is logged and before any thread starts.
void chooseLogLevel(const std::optional<int>& asked);

/// To the platform's log.
void logLine(LogLevel level, const std::string& line);

}  // namespace voxtreld

#endif
