// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_INTERNAL_CURRENTLANGUAGE_H
#define VOXTREL_CLIENT_INTERNAL_CURRENTLANGUAGE_H

#include "client/TTSClientPrivate.h"

namespace TTS {

/// Asks the service for its global language.
///
/// @param logFormat logged with the code (its one "%s") when the service has answered.
/// @param language set on success; `LANG_NA` for a code that is none of ours.
/// @return 0, or the failure of `globalConfig`.
int askGlobalLanguage(TTSClientPrivate& client, const char* logFormat,
                      EN_VOXTREL_LANGUAGE* language);

/// The client's own language or, while it has none, the service's: as `askGlobalLanguage`, which is
/// called only then.
int resolveLanguage(TTSClientPrivate& client, const char* logFormat, EN_VOXTREL_LANGUAGE* language);

}  // namespace TTS

#endif
