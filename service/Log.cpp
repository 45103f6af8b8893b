// SPDX-License-Identifier: Apache-2.0
#include "service/Log.h"

#include <ttscommon/ttscommon.h>

#include <cstdlib>

namespace voxtreld {

void chooseLogLevel(const std::optional<int>& asked) {
    const int level = asked.value_or(static_cast<int>(LogLevel::Info));
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has been started
    (void)setenv("VOXTREL_LOG_LEVEL", std::to_string(level).c_str(), asked.has_value() ? 1 : 0);
}

void logLine(LogLevel level, const std::string& line) {
    dbgPrint(static_cast<int>(level), "voxtreld: %s\n", line.c_str());
}

}  // namespace voxtreld
