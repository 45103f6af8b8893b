// SPDX-License-Identifier: Apache-2.0
#include "client/internal/FilterText.h"

#include <ttscommon/ttscommon.h>

#include <cstring>
#include <sstream>

#include "vocabulary/Language.h"

namespace TTS {
namespace {

/// Takes the next item off the text; an item without "." is both code and voice.
bool nextItem(std::istream& text, FilterItem* item) {
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

std::string deviceFilter() {
    // Some devices declare it as an array, hence the pointer; a null one is empty.
    const char* text = INI_LANGUAGE_WITH_VOICES;
    return text != nullptr ? text : "";
}

VoiceInFilter findVoice(const std::string& filter, const VoiceInfo& voice) {
    std::istringstream text(filter);
    VoiceInFilter found;
    FilterItem item;
    while (!found.item && nextItem(text, &item)) {
        if (langStr2Id(item.code) != voice.langId) {
            continue;
        }
        found.isRestricted = true;
        if (item.voice == nameOf(voice)) {
            found.item = item;
        }
    }
    return found;
}

std::optional<FilterItem> findRemoval(const std::string& filter, EN_VOXTREL_LANGUAGE language) {
    std::istringstream text(filter);
    FilterItem item;
    while (nextItem(text, &item)) {
        if (item.voice == "none" && langStr2Id(item.code) == language) {
            return item;
        }
    }
    return std::nullopt;
}

}  // namespace TTS
