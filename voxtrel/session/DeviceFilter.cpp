// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/DeviceFilter.h"

#include <algorithm>

#include "client/internal/FilterText.h"

namespace voxtrel {

void removeFiltered(TTS::Capabilities& capabilities) {
    const std::string filter = TTS::deviceFilter();
    if (filter.empty()) {
        return;
    }
    std::vector<bool>& languages = capabilities.languages;
    for (std::size_t id = 0; id < languages.size(); ++id) {
        const auto language = static_cast<EN_VOXTREL_LANGUAGE>(id);
        languages[id] = languages[id] && !TTS::findRemoval(filter, language);
    }
    const auto isTaken = [&](const TTS::VoiceInfo& voice) {
        return TTS::findRemoval(filter, voice.langId) || !TTS::findVoice(filter, voice).isUsable();
    };
    std::vector<TTS::VoiceInfo>& voices = capabilities.voices;
    voices.erase(std::remove_if(voices.begin(), voices.end(), isTaken), voices.end());
}

bool isVoiceTakenAway(const TTS::Capabilities& left, EN_VOXTREL_LANGUAGE language,
                      std::uint32_t number) {
    const auto isMeant = [=](const TTS::VoiceInfo& voice) {
        return voice.langId == language && voice.id == number;
    };
    return !TTS::deviceFilter().empty() &&
           std::none_of(left.voices.begin(), left.voices.end(), isMeant);
}

}  // namespace voxtrel
