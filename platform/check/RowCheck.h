// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_ROWCHECK_H
#define VOXTREL_PLATFORM_CHECK_ROWCHECK_H

#include <chrono>

#include "check/Report.h"
#include "check/Row.h"

namespace check {

/// Checks a row in a child process, which a runtime that is wrong may hang or crash: that is then
/// the result.
Result checkInChild(const Row& row, std::chrono::seconds deadline, bool isVerbose);

/// Runs in that child process: checks the row and reports the result.
/// @return the exit status.
int checkRow(const char* row, const Report& report);

}  // namespace check

#endif
