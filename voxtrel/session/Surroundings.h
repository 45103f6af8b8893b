// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_SURROUNDINGS_H
#define VOXTREL_SESSION_SURROUNDINGS_H

#include <string>

#include "voxtrel/Diagnosis.h"

namespace voxtrel {

/// Is this process stopped, as far as the system tells? Never waits. Called on: any thread.
bool isStopped(std::uint32_t process);

/// What a connection to the socket of a service manager would meet, with who listens there. It is
/// closed again at once. Never waits. Called on: any thread.
Diagnosis lookAtSocket(const std::string& path);

/// Whether this user may use the kernel's binder driver at this path. Whether a service manager is
/// there, the driver tells only by asking that. Never waits. Called on: any thread.
Diagnosis lookAtDriver(const std::string& path);

}  // namespace voxtrel

#endif
