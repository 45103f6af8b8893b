// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_MANAGERPLACE_H
#define VOXTREL_SERVICE_MANAGERPLACE_H

#include <chrono>
#include <csignal>
#include <string>

namespace voxtreld {

/// Where the runtime reaches the service manager, for messages: its driver, or its socket.
std::string managerPlace();

/// How long to wait for a service manager that is started at the same time.
constexpr std::chrono::seconds kManagerTimeout(2);

/// True once the driver or the socket is there and may be opened, whether or not a service manager
/// is behind it. Waits `kManagerTimeout` at most, and no longer than until one of the `signals`
/// comes.
/// @param error receives, on failure, what is missing and what to do; nothing after a signal.
bool isManagerPlaceUsable(const sigset_t& signals, std::string& error);

}  // namespace voxtreld

#endif
