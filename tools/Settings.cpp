// SPDX-License-Identifier: Apache-2.0
#include "tools/Settings.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <sstream>

#include "tools/Errors.h"

namespace voxtrelctl {
namespace {

constexpr auto kNoKey = static_cast<VOXTRELAPI_GCONF>(0);

std::string numberText(double number) {
    std::ostringstream out;
    out << number;
    return out.str();
}

std::string rangeOf(float least, float most) {
    return numberText(static_cast<double>(least)) + " to " + numberText(static_cast<double>(most));
}

[[noreturn]] void reject(const Setting& setting, const std::string& text, const char* wanted) {
    throw Failure(TTS::STATUS_BAD_PARAMETER,
                  std::string(setting.name) + " takes " + wanted + ", not \"" + text + "\"");
}

}  // namespace

const std::vector<Setting>& settings() {
    static const std::vector<Setting> table = {
        {"speed", GCONF_SPEED, GCONF_SPEED_ENABLE, ValueType::Unsigned, "words a minute"},
        {"pitch", GCONF_PITCH, GCONF_PITCH_ENABLE, ValueType::Float, "height of the voice"},
        {"voice", GCONF_VOICE, GCONF_VOICE_ENABLE, ValueType::Unsigned,
         "number of the voice within its language"},
        {"volume", GCONF_VOLUME, GCONF_VOLUME_ENABLE, ValueType::Float, "loudness of the voice"},
        {"bg-volume", GCONF_BG_VOLUME, GCONF_BG_VOLUME_ENABLE, ValueType::Unsigned,
         "volume of other sound while speaking, percent"},
        {"tts-volume", GCONF_TTS_VOLUME, GCONF_TTS_VOLUME_ENABLE, ValueType::Unsigned,
         "volume of the speech output, percent"},
        {"language", GCONF_LANGUAGE, kNoKey, ValueType::Language, "locale code, as in en_US"},
        {"rate", kNoKey, kNoKey, ValueType::Unsigned, "service-wide rate, words a minute"},
        {"verbosity", kNoKey, kNoKey, ValueType::Unsigned, "0 or 1"},
    };
    return table;
}

const Setting* findSetting(const std::string& name) {
    const auto& all = settings();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Setting& s) { return s.name == name; });
    return found == all.end() ? nullptr : &*found;
}

const Setting& settingNamed(const std::string& name) {
    const Setting* setting = findSetting(name);
    if (setting == nullptr) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, "there is no setting \"" + name + "\"",
                      "there are " + settingNames([](const Setting&) { return true; }));
    }
    return *setting;
}

std::string settingNames(bool (*wanted)(const Setting&)) {
    std::string names;
    for (const Setting& setting : settings()) {
        if (wanted(setting)) {
            names += (names.empty() ? "" : ", ") + std::string(setting.name);
        }
    }
    return names;
}

bool hasFlag(const Setting& setting) {
    return setting.flag != kNoKey;
}

std::string valueText(const Value& value) {
    if (const auto* whole = std::get_if<uint32_t>(&value)) {
        return std::to_string(*whole);
    }
    if (const auto* whole = std::get_if<int32_t>(&value)) {
        return std::to_string(*whole);
    }
    if (const auto* real = std::get_if<float>(&value)) {
        return numberText(static_cast<double>(*real));
    }
    return std::get<std::string>(value);
}

Value parseValue(const Setting& setting, const std::string& text) {
    const char* end = text.data() + text.size();
    if (setting.type == ValueType::Language) {
        return text;
    }
    if (setting.type == ValueType::Unsigned) {
        uint32_t whole = 0;
        const auto [stop, error] = std::from_chars(text.data(), end, whole);
        if (error != std::errc() || stop != end) {
            reject(setting, text, "a whole number");
        }
        return whole;
    }
    float real = 0.0F;
    const auto [stop, error] = std::from_chars(text.data(), end, real);
    // The library lets a NaN pass every range test, so it is stopped here.
    if (error != std::errc() || stop != end || real != real) {
        reject(setting, text, "a number");
    }
    return real;
}

std::string rangeText(const Setting& setting, const TTS::Capabilities& can) {
    const std::string name = setting.name;
    if (name == "speed" || name == "rate") {
        return can.speedSupported
                   ? std::to_string(can.speedMin) + " to " + std::to_string(can.speedMax)
                   : "";
    }
    if (name == "pitch") {
        return can.pitchSupported ? rangeOf(can.pitchMin, can.pitchMax) : "";
    }
    if (name == "volume") {
        return can.volumeSupported ? rangeOf(can.volumeMin, can.volumeMax) : "";
    }
    if (name == "verbosity") {
        return "0 to 1";
    }
    return name == "bg-volume" || name == "tts-volume" ? "0 to 100" : "";
}

std::string acceptedText(const Setting& setting, const TTS::Capabilities& can) {
    const std::string range = rangeText(setting, can);
    if (!range.empty()) {
        return " (it takes " + range + ")";
    }
    const bool isNamed = setting.key == GCONF_LANGUAGE || setting.key == GCONF_VOICE;
    return isNamed ? "" : " (the service does not support it)";
}

}  // namespace voxtrelctl
