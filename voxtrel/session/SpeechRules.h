// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_SPEECHRULES_H
#define VOXTREL_SESSION_SPEECHRULES_H

#include <optional>
#include <string>
#include <string_view>

#include "vocabulary/Capabilities.h"
#include "voxtrel/Result.h"
#include "voxtrel/Speech.h"

namespace voxtrel {

/// The numbers that go with a text to the service.
struct WireSettings {
    static constexpr std::uint32_t kNotSet = 65535;

    std::uint32_t speed = kNotSet;
    float volume = static_cast<float>(kNotSet);
    std::uint32_t voice = kNotSet;
    std::uint32_t mediaVolume = kNotSet;
    std::uint32_t speechVolume = kNotSet;
    float pitch = static_cast<float>(kNotSet);
    EN_VOXTREL_LANGUAGE language = LANG_NA;
};

/// The language that a tag or a code names, whatever its case and whether with '-' or '_'; without
/// its region, or with one that is not known, the first of that language.
std::optional<EN_VOXTREL_LANGUAGE> languageOf(std::string_view tag);

/// The number that stands for a voice; nothing if it is a name.
std::optional<std::uint32_t> voiceNumberOf(std::string_view voice);

/// "fr-FR"; empty for none.
std::string tagOf(EN_VOXTREL_LANGUAGE language);

/// Those of `options` where they are set, else those of `defaults`.
SpeechOptions merged(const SpeechOptions& options, const SpeechOptions& defaults);

/// Ok unless an option is wrong whatever service there is.
Status checkOptions(const SpeechOptions& options);

/// What the options are on the wire to a service with these capabilities, or the reason why not.
Result<WireSettings> toWire(const SpeechOptions& options, const TTS::Capabilities& capabilities);

/// The features that the capabilities stand for.
/// @param can what the device leaves to applications of `all`, which the service can do.
Features toFeatures(const TTS::Capabilities& can, const TTS::Capabilities& all);

}  // namespace voxtrel

#endif
