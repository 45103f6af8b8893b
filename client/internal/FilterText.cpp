// SPDX-License-Identifier: Apache-2.0
#include "client/internal/FilterText.h"

#include <ttscommon/ttscommon.h>

#include <algorithm>
#include <cstring>

#include "vocabulary/Language.h"

namespace TTS {
namespace {

/// The items of a filter, one after another.
class Items {
public:
    explicit Items(const std::string& filter) : mFilter(filter) {}

    /// False at the end. An item without "." is both code and voice.
    bool next(FilterItem* item) {
        if (mStart >= mFilter.size()) {
            return false;
        }
        const size_t end = std::min(mFilter.find(',', mStart), mFilter.size());
        const std::string whole = mFilter.substr(mStart, end - mStart);
        mStart = end + 1;
        const size_t dot = whole.find('.');
        item->code = whole.substr(0, dot);
        item->voice = dot == std::string::npos ? whole : whole.substr(dot + 1);
        return true;
    }

private:
    const std::string& mFilter;
    size_t mStart = 0;
};

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
    Items items(filter);
    VoiceInFilter found;
    FilterItem item;
    while (!found.item && items.next(&item)) {
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
    Items items(filter);
    FilterItem item;
    while (items.next(&item)) {
        if (item.voice == "none" && langStr2Id(item.code) == language) {
            return item;
        }
    }
    return std::nullopt;
}

}  // namespace TTS
