// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILE_INTERNAL_PROFILEWRITER_H
#define VOXTREL_PROFILE_INTERNAL_PROFILEWRITER_H

#include <string>

#include "profile/TtsSetting.h"

namespace TTS {

/// The lines of a profile, as `TtsSetting::serialize` writes them.
std::string profileText(const TtsSetting& setting);

}  // namespace TTS

#endif
