// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/SpeechRules.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <system_error>

namespace voxtrel {
namespace {

struct Tag {
    EN_VOXTREL_LANGUAGE language;
    std::string_view text;
};

constexpr Tag kTags[] = {
    {LANG_EN_US, "en-US"}, {LANG_FR_FR, "fr-FR"}, {LANG_ES_ES, "es-ES"},
    {LANG_KO_KR, "ko-KR"}, {LANG_PT_PT, "pt-PT"},
};

constexpr std::size_t kLanguagePart = 2;

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool isSameText(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

bool speaks(const TTS::Capabilities& capabilities, EN_VOXTREL_LANGUAGE language) {
    const auto index = static_cast<std::size_t>(language);
    return index < capabilities.languages.size() && capabilities.languages[index];
}

std::string nameOf(const TTS::VoiceInfo& voice) {
    return {voice.name, strnlen(voice.name, sizeof voice.name)};
}

Error errorOf(Status status) {
    return {status, describe(status)};
}

/// The voice with that name or number; its language too, if none was asked for.
Status chooseVoice(const std::string& wanted, const TTS::Capabilities& capabilities,
                   WireSettings& wire) {
    const std::optional<std::uint32_t> number = voiceNumberOf(wanted);
    if (number && wire.language == LANG_NA) {
        return Status::NoLanguage;
    }
    for (const TTS::VoiceInfo& voice : capabilities.voices) {
        const bool isInLanguage = wire.language == LANG_NA || voice.langId == wire.language;
        const bool isMeant = number ? voice.id == *number : isSameText(nameOf(voice), wanted);
        if (isInLanguage && isMeant) {
            wire.voice = voice.id;
            wire.language = voice.langId;
            return Status::Ok;
        }
    }
    return Status::NotSupported;
}

template <typename Number>
Status choose(const std::optional<Number>& wanted, bool isSupported, Number least, Number most,
              Number& out) {
    if (!wanted) {
        return Status::Ok;
    }
    if (!isSupported) {
        return Status::NotSupported;
    }
    if (!(*wanted >= least && *wanted <= most)) {
        return Status::BadParameter;
    }
    out = *wanted;
    return Status::Ok;
}

template <typename Value>
void prefer(std::optional<Value>& value, const std::optional<Value>& fallback) {
    if (!value) {
        value = fallback;
    }
}

}  // namespace

std::optional<EN_VOXTREL_LANGUAGE> languageOf(std::string_view tag) {
    std::string plain(tag.substr(0, tag.find('.')));  // "fr_FR.UTF-8"
    std::replace(plain.begin(), plain.end(), '_', '-');
    for (const Tag& each : kTags) {
        if (isSameText(each.text, plain)) {
            return each.language;
        }
    }
    const std::string_view language = std::string_view(plain).substr(0, plain.find('-'));
    for (const Tag& each : kTags) {
        if (isSameText(each.text.substr(0, kLanguagePart), language)) {
            return each.language;
        }
    }
    return std::nullopt;
}

std::optional<std::uint32_t> voiceNumberOf(std::string_view voice) {
    std::uint32_t number = 0;
    const char* const end = voice.data() + voice.size();
    const auto read = std::from_chars(voice.data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

std::string tagOf(EN_VOXTREL_LANGUAGE language) {
    const auto* found = std::find_if(std::begin(kTags), std::end(kTags),
                                     [=](const Tag& each) { return each.language == language; });
    return found == std::end(kTags) ? "" : std::string(found->text);
}

SpeechOptions merged(const SpeechOptions& options, const SpeechOptions& defaults) {
    SpeechOptions all = options;
    // A voice belongs to its language, and another one's is of no use.
    const bool isOther = all.language && (!defaults.language || languageOf(*all.language) !=
                                                                    languageOf(*defaults.language));
    prefer(all.voice, isOther ? std::nullopt : defaults.voice);
    prefer(all.language, defaults.language);
    prefer(all.speed, defaults.speed);
    prefer(all.pitch, defaults.pitch);
    prefer(all.volume, defaults.volume);
    prefer(all.speechVolume, defaults.speechVolume);
    prefer(all.mediaVolume, defaults.mediaVolume);
    prefer(all.onLoss, defaults.onLoss);
    return all;
}

Status checkOptions(const SpeechOptions& options) {
    const auto isPercent = [](const std::optional<std::uint32_t>& value) {
        return !value || *value <= 100;
    };
    const auto isNumber = [](const std::optional<float>& value) {
        return !value || std::isfinite(*value);
    };
    if (options.language && !languageOf(*options.language)) {
        return Status::NotSupported;
    }
    const bool isRight = isPercent(options.speechVolume) && isPercent(options.mediaVolume) &&
                         isNumber(options.pitch) && isNumber(options.volume);
    return isRight ? Status::Ok : Status::BadParameter;
}

Result<WireSettings> toWire(const SpeechOptions& options, const TTS::Capabilities& can) {
    WireSettings wire;
    if (options.language) {
        const std::optional<EN_VOXTREL_LANGUAGE> language = languageOf(*options.language);
        if (!language || !speaks(can, *language)) {
            return errorOf(Status::NotSupported);
        }
        wire.language = *language;
    }
    constexpr std::uint32_t kAll = 100;
    const Status statuses[] = {
        options.voice ? chooseVoice(*options.voice, can, wire) : Status::Ok,
        choose(options.speed, can.speedSupported, can.speedMin, can.speedMax, wire.speed),
        choose(options.pitch, can.pitchSupported, can.pitchMin, can.pitchMax, wire.pitch),
        choose(options.volume, can.volumeSupported, can.volumeMin, can.volumeMax, wire.volume),
        choose(options.speechVolume, true, 0U, kAll, wire.speechVolume),
        choose(options.mediaVolume, true, 0U, kAll, wire.mediaVolume),
    };
    for (const Status status : statuses) {
        if (status != Status::Ok) {
            return errorOf(status);
        }
    }
    return wire;
}

Features toFeatures(const TTS::Capabilities& can, const TTS::Capabilities& all) {
    Features features;
    features.speed = {can.speedSupported, can.speedMin, can.speedMax};
    features.pitch = {can.pitchSupported, can.pitchMin, can.pitchMax};
    features.volume = {can.volumeSupported, can.volumeMin, can.volumeMax};
    for (const Tag& each : kTags) {
        if (speaks(all, each.language)) {
            (speaks(can, each.language) ? features.languages : features.filteredLanguages)
                .emplace_back(each.text);
        }
    }
    for (const TTS::VoiceInfo& voice : all.voices) {
        const bool isLeft = std::any_of(
            can.voices.begin(), can.voices.end(),
            [&](const auto& left) { return left.id == voice.id && left.langId == voice.langId; });
        (isLeft ? features.voices : features.filteredVoices)
            .push_back({nameOf(voice), tagOf(voice.langId), voice.id});
    }
    return features;
}

}  // namespace voxtrel
