// SPDX-License-Identifier: Apache-2.0
#include "client/internal/DeviceFilter.h"

#include <optional>
#include <string>

#include "client/internal/FilterText.h"
#include "client/internal/Log.h"
#include "vocabulary/Status.h"

namespace TTS {

int findVoiceInFilter(const VoiceInfo& voice, bool* listed) {
    const std::string filter = deviceFilter();
    dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("supportVoiceByFilter(), INI_LANGUAGE_WITH_VOICES = %s"),
             filter.c_str());
    const VoiceInFilter found = findVoice(filter, voice);
    if (found.item) {
        dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("supportVoiceByFilter(), language : %s, voice : %s"),
                 found.item->code.c_str(), found.item->voice.c_str());
    }
    *listed = found.item.has_value();
    return found.isRestricted ? 1 : 0;
}

bool isUsable(const VoiceInfo& voice) {
    bool listed = false;
    return findVoiceInFilter(voice, &listed) == 0 || listed;
}

int refusalOfVoice(const Capabilities& capabilities, EN_VOXTREL_LANGUAGE language, uint32_t id) {
    for (const VoiceInfo& voice : capabilities.voices) {
        if (voice.langId == language && voice.id == id && !isUsable(voice)) {
            return STATUS_NOT_SUPPORTED;
        }
    }
    return STATUS_OK;
}

bool isFilteredOut(EN_VOXTREL_LANGUAGE language) {
    const std::string filter = deviceFilter();
    dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("languageByFilter(), INI_LANGUAGE_WITH_VOICES = %s"),
             filter.c_str());
    const std::optional<FilterItem> item = findRemoval(filter, language);
    if (item) {
        dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("languageByFilter(), language : %s, voice : %s"),
                 item->code.c_str(), item->voice.c_str());
    }
    return item.has_value();
}

}  // namespace TTS
