// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_REPORT_H
#define VOXTREL_TESTS_SOAK_REPORT_H

#include <ostream>

#include "tests/soak/Soak.h"

namespace soak {

/// Prints the table.
/// @return nothing was found that should not be.
bool report(const Soak::Result& result, std::ostream& out);

}  // namespace soak

#endif
