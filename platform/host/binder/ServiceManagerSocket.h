// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_SERVICEMANAGERSOCKET_H
#define VOXTREL_BINDER_SERVICEMANAGERSOCKET_H

#include <string>

namespace android {

/// Where this process looks for the service manager: $VOXTREL_BINDER_SOCKET, else a place in the
/// user's runtime folder, else one under /tmp. Of this stand-in alone: a device has no such file.
std::string serviceManagerSocket();

/// Makes the folder of that socket for this user alone, where it is not there. False when the
/// folder may be another user's.
bool makeServiceManagerFolder();

}  // namespace android

#endif
