// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_PROFILEPATH_H
#define VOXTREL_TOOLS_PROFILEPATH_H

#include <string>

namespace voxtrelctl {

/// The file of a profile named on the command line: a name with "/" in it or with ".ini" at its end
/// is a path; any other is the profile /Customer/NAME.ini.
std::string profilePath(const std::string& name);

}  // namespace voxtrelctl

#endif
