// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_INTERNAL_DEVICEFILTER_H
#define VOXTREL_CLIENT_INTERNAL_DEVICEFILTER_H

#include "vocabulary/Capabilities.h"

namespace TTS {

/// Looks a voice up in the device's filter, with the log lines and results of
/// `TTSClientPrivate::supportVoiceByFilter`.
int findVoiceInFilter(const VoiceInfo& voice, bool* listed);

/// The filter takes the whole language away; log lines as `TTSClientPrivate::languageByFilter`.
bool isFilteredOut(EN_VOXTREL_LANGUAGE language);

/// The filter leaves this voice to applications.
bool isUsable(const VoiceInfo& voice);

/// -9 when the service has a voice of this language and id that the filter takes away, else 0.
int refusalOfVoice(const Capabilities& capabilities, EN_VOXTREL_LANGUAGE language, uint32_t id);

}  // namespace TTS

#endif
