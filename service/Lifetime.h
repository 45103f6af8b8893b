// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_LIFETIME_H
#define VOXTREL_SERVICE_LIFETIME_H

#include <chrono>
#include <csignal>
#include <string>

#include "service/VoxtrelService.h"

namespace voxtreld {

/// Blocks the signals in this thread and all that it starts, so that `waitForEnd` gets them.
sigset_t blockSignals();

/// Waits for one of the blocked signals and consumes it. @return false when the time is up.
bool signalComesWithin(const sigset_t& signals, std::chrono::milliseconds time);

/// Returns on a signal or, with a limit above 0, once the service has been idle for that long.
/// @return the reason, for the log.
std::string waitForEnd(const sigset_t& signals, VoxtrelService& service,
                       std::chrono::seconds idleLimit);

}  // namespace voxtreld

#endif
