// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_PROFILEFILE_H
#define VOXTREL_TOOLS_PROFILEFILE_H

#include <string>
#include <vector>

#include "tools/Reports.h"
#include "voxtrel/Profile.h"

namespace voxtrelctl {

/// The file of a profile named on the command line: a name with "/" in it or with ".ini" at its end
/// is a path; any other is the profile /Customer/NAME.ini.
std::string profilePath(const std::string& name);

/// Every value of a profile by its key in the file, in the file's order; those that are read but
/// never written come last.
std::vector<ProfileEntry> profileEntries(const voxtrel::Profile& profile);

/// Throw Failure(-6) with the system's reason.
void copyProfile(const std::string& source, const std::string& destination);
void removeProfile(const std::string& path);

}  // namespace voxtrelctl

#endif
