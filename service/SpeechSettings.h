// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_SPEECHSETTINGS_H
#define VOXTREL_SERVICE_SPEECHSETTINGS_H

#include <cstdint>

#include "service/GlobalSettings.h"
#include "service/Utterance.h"

namespace voxtreld {

/// The settings that a request carries; each may be unset.
struct SpeechSettings {
    uint32_t speed = kUnset;
    float volume = static_cast<float>(kUnset);
    uint32_t voice = kUnset;
    uint32_t bgVolume = kUnset;
    uint32_t ttsVolume = kUnset;
    float pitch = static_cast<float>(kUnset);
    EN_VOXTREL_LANGUAGE language = LANG_NA;
};

/// Decides how an utterance sounds.
///
/// A setting that the request leaves unset, or whose flag is off, has the global value. Without a
/// language of its own the request has the global one. Voice 0 is the first of the language, and
/// so is an unset voice in another than the global language.
///
/// @return -3 for a value out of range, -9 for a language without voices; `utterance` is then in
///     part filled. Called on: any thread. Locks: none.
int resolve(const SpeechSettings& asked, const GlobalSettings& global, Utterance& utterance);

}  // namespace voxtreld

#endif
