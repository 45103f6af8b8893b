// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILE_INTERNAL_PROFILEREADER_H
#define VOXTREL_PROFILE_INTERNAL_PROFILEREADER_H

#include <istream>

#include "profile/TtsSetting.h"

namespace TTS {

/// Reads the lines of a profile into the fields, as `TtsSetting::deserialize` does; no upgrade, and
/// nothing is printed.
/// @return true if a line says that the profile has the setting's `mVersion`.
bool readProfile(std::istream& file, TtsSetting& setting);

}  // namespace TTS

#endif
