// SPDX-License-Identifier: Apache-2.0
#include "service/MarkupVoices.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace voxtreld {
namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The language of a tag such as "fr" or "fr-CA", or LANG_NA.
EN_VOXTREL_LANGUAGE languageOf(std::string_view tag) {
    const bool isLong = tag.size() > 2;
    if (tag.size() < 2 || (isLong && tag[2] != '-' && tag[2] != '_')) {
        return LANG_NA;
    }
    for (int id = LANG_EN_US; id < LANG_NA; ++id) {
        const auto language = static_cast<EN_VOXTREL_LANGUAGE>(id);
        const std::string code = TTS::langId2Str(language);
        if (code[0] == lower(tag[0]) && code[1] == lower(tag[1])) {
            return language;
        }
    }
    return LANG_NA;
}

uint32_t numberOf(std::string_view text) {
    uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && at == end ? number : 0;
}

}  // namespace

uint32_t MarkupVoices::count(EN_VOXTREL_LANGUAGE language) const {
    const auto voices = std::count_if(mVoices.begin(), mVoices.end(), [&](const EngineVoice& each) {
        return each.language == language;
    });
    return static_cast<uint32_t>(voices);
}

MarkupVoice MarkupVoices::within(const MarkupTag& tag, MarkupVoice around) const {
    MarkupVoice chosen = around;
    const EN_VOXTREL_LANGUAGE language = languageOf(attributeOf(tag, "xml:lang"));
    if (language != chosen.language && count(language) > 0) {
        chosen = {language, 1};
    }
    if (tag.name != "voice") {
        return chosen;
    }
    const uint32_t variant = numberOf(attributeOf(tag, "variant"));
    if (variant > 0 && variant <= count(chosen.language)) {
        chosen.number = variant;
    }
    const std::string_view name = attributeOf(tag, "name");
    uint32_t numbers[LANG_NA] = {};
    for (const EngineVoice& voice : mVoices) {
        const uint32_t number = ++numbers[voice.language];
        if (voice.name == name) {
            return {voice.language, number};
        }
    }
    return chosen;
}

}  // namespace voxtreld
