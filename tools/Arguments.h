// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_ARGUMENTS_H
#define VOXTREL_TOOLS_ARGUMENTS_H

#include "tools/Options.h"

namespace voxtrelctl {

/// Reads the command line. Help and version texts come back in `helpText`.
/// Throws Failure(-3), with the reason and the page to read, when the arguments do not fit.
Options parseArguments(int argc, const char* const* argv);

}  // namespace voxtrelctl

#endif
