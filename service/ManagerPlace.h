// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_MANAGERPLACE_H
#define VOXTREL_SERVICE_MANAGERPLACE_H

#include <string>

namespace voxtreld {

/// Where the runtime reaches the service manager, for messages: its driver, or its socket.
std::string managerPlace();

/// True if the driver or the socket is there and may be opened, whether or not a service manager is
/// behind it. @param error receives what is missing and what to do.
bool isManagerPlaceUsable(std::string& error);

}  // namespace voxtreld

#endif
