// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILE_INTERNAL_PROFILEWRITER_H
#define VOXTREL_PROFILE_INTERNAL_PROFILEWRITER_H

#include <ostream>

#include "profile/TtsSetting.h"

namespace TTS {

/// Writes the lines of a profile, as `TtsSetting::serialize` does; nothing is printed, and what
/// cannot be written shows in the state of the stream. The stream has the classic locale.
void writeProfile(std::ostream& file, const TtsSetting& setting);

}  // namespace TTS

#endif
