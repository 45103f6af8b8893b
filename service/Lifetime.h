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

/// Waits for one of the signals, which are blocked, and takes it. @return false when the time is
/// up.
bool signalComesWithin(const sigset_t& signals, std::chrono::milliseconds time);

/// Returns when a signal asks for the end or, with a limit above 0, when nobody has needed the
/// service for so long. @return which, for the log.
std::string waitForEnd(const sigset_t& signals, VoxtrelService& service,
                       std::chrono::seconds idleLimit);

}  // namespace voxtreld

#endif
