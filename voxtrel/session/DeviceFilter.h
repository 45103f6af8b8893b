// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_DEVICEFILTER_H
#define VOXTREL_SESSION_DEVICEFILTER_H

#include "vocabulary/Capabilities.h"

namespace voxtrel {

/// Takes away the languages and voices that this device does not leave to applications.
void removeFiltered(TTS::Capabilities& capabilities);

/// The device restricts voices, and this one is not among those that `removeFiltered` has left.
bool isVoiceTakenAway(const TTS::Capabilities& left, EN_VOXTREL_LANGUAGE language,
                      std::uint32_t number);

}  // namespace voxtrel

#endif
