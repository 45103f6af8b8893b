// SPDX-License-Identifier: Apache-2.0
#include "client/DeviceFilter.h"

#include <cstring>
#include <sstream>
#include <string>

#include "client/Log.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

struct Item {
    std::string code;
    std::string voice;
};

/// The device's text; a null one is empty. Some devices declare it as an array, hence the pointer.
std::string filterText() {
    const char* text = INI_LANGUAGE_WITH_VOICES;
    return text != nullptr ? text : "";
}

/// Takes the next item off the text; an item without "." is both code and voice.
bool nextItem(std::istream& text, Item* item) {
    std::string whole;
    if (!std::getline(text, whole, ',')) {
        return false;
    }
    const size_t dot = whole.find('.');
    item->code = whole.substr(0, dot);
    item->voice = dot == std::string::npos ? whole : whole.substr(dot + 1);
    return true;
}

std::string nameOf(const VoiceInfo& voice) {
    return {voice.name, strnlen(voice.name, sizeof voice.name)};
}

}  // namespace

int findVoiceInFilter(const VoiceInfo& voice, bool* listed) {
    std::istringstream text(filterText());
    dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("supportVoiceByFilter(), INI_LANGUAGE_WITH_VOICES = %s"),
             text.str().c_str());
    int result = 0;
    *listed = false;
    Item item;
    while (nextItem(text, &item)) {
        if (langStr2Id(item.code) != voice.langId) {
            continue;
        }
        result = 1;
        if (item.voice == nameOf(voice)) {
            dbgPrint(kLogTrace,
                     VOXTREL_DEBUG_LINE("supportVoiceByFilter(), language : %s, voice : %s"),
                     item.code.c_str(), item.voice.c_str());
            *listed = true;
            break;
        }
    }
    return result;
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
    std::istringstream text(filterText());
    dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("languageByFilter(), INI_LANGUAGE_WITH_VOICES = %s"),
             text.str().c_str());
    Item item;
    while (nextItem(text, &item)) {
        if (item.voice == "none" && langStr2Id(item.code) == language) {
            dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("languageByFilter(), language : %s, voice : %s"),
                     item.code.c_str(), item.voice.c_str());
            return true;
        }
    }
    return false;
}

}  // namespace TTS
