// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SPEECH_H
#define VOXTREL_SPEECH_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace voxtrel {

/// What to do when the service dies, is ended, or never gets an utterance.
enum class OnLoss {
    Report,            ///< its outcome is Lost
    SayAgain,          ///< said once more if nothing of it has been heard
    SayAgainWhatever,  ///< said once more from its beginning, also if a part has been heard
};

/// How to speak. What is not set is as the client's own (`Client::setDefaults`), and what is not
/// set there is as the service's.
struct SpeechOptions {
    std::optional<std::string> language = {};        ///< "fr", "fr-FR", "fr_FR": the nearest
    std::optional<std::string> voice = {};           ///< a name, or its number in the language
    std::optional<std::uint32_t> speed = {};         ///< `Features::speed`
    std::optional<float> pitch = {};                 ///< `Features::pitch`
    std::optional<float> volume = {};                ///< `Features::volume`
    std::optional<std::uint32_t> speechVolume = {};  ///< per cent, beside `volume`
    std::optional<std::uint32_t> mediaVolume = {};   ///< per cent, of other sounds meanwhile
    std::optional<OnLoss> onLoss = {};               ///< Report
};

struct Voice {
    std::string name;
    std::string language;      ///< as a tag, "fr-FR"
    std::uint32_t number = 0;  ///< from 1 in its language
};

template <typename Number>
struct Range {
    bool isSupported = false;
    Number least = 0;
    Number most = 0;
};

/// What the service can do.
struct Features {
    Range<std::uint32_t> speed;
    Range<float> pitch;
    Range<float> volume;
    std::vector<std::string> languages;  ///< as tags, "en-US"
    std::vector<Voice> voices;
    std::vector<std::string> filteredLanguages;  ///< the service's, kept from applications here
    std::vector<Voice> filteredVoices;
};

}  // namespace voxtrel

#endif
