// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_PROFILEFILE_H
#define VOXTREL_TOOLS_PROFILEFILE_H

#include <string>

#include "client/TTSClientPrivate.h"

namespace voxtrelctl {

/// The file of a profile named on the command line: a name with "/" in it or with ".ini" at its end
/// is a path; any other is the profile /Customer/NAME.ini.
std::string profilePath(const std::string& name);

/// All that is in a file. Throws Failure(-6) for what cannot be read, or is no plain file.
std::string contentOf(const std::string& path);

/// Reads a profile into the client's settings, and leaves the file alone: reading the service's own
/// profile directly may upgrade it and write it again, so a copy is read. Throws Failure(-6).
void readProfile(TTS::TTSClientPrivate& client, const std::string& path);

}  // namespace voxtrelctl

#endif
