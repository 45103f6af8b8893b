// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SPAWN_H
#define VOXTREL_TOOLS_SPAWN_H

#include "tools/Options.h"
#include "tools/Terminal.h"

namespace voxtrelctl {

/// Has a service manager and a service running, starting what is missing, and returns when the
/// service can speak. Others that do the same at the same time wait for each other. What was
/// started stays when this program ends, and ends by itself when nobody needs it.
/// Throws Failure(-8) that says what cannot be started and why; Ctrl-C meanwhile ends the process
/// with status 1. Called on: the main thread.
void ensureRunning(const Options& options, Terminal& terminal);

}  // namespace voxtrelctl

#endif
