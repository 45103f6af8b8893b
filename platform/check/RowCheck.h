// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_LOOK_H
#define VOXTREL_PLATFORM_CHECK_LOOK_H

#include <chrono>

#include "check/Report.h"
#include "check/Row.h"

namespace check {

/// Looks at a row in a process of its own: a runtime that hangs there, or ends it, is what was
/// seen.
Seen lookApart(const Row& row, std::chrono::seconds deadline, bool isVerbose);

/// What that process does: looks, and tells what it saw.
/// @return the exit status.
int lookHere(const char* row, const Report& report);

}  // namespace check

#endif
