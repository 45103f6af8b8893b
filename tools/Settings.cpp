// SPDX-License-Identifier: Apache-2.0
#include "tools/Settings.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "tools/Errors.h"
#include "tools/Languages.h"
#include "tools/Text.h"

namespace voxtrelctl {
namespace {

using voxtrel::Features;
using voxtrel::GlobalSettings;
using voxtrel::Range;
using voxtrel::Switch;

std::string numberText(double number) {
    std::ostringstream out;
    out << number;
    return out.str();
}

bool isLanguage(const Setting& setting) {
    return std::holds_alternative<std::optional<std::string> GlobalSettings::*>(setting.field);
}

bool isReal(const Setting& setting) {
    return std::holds_alternative<std::optional<float> GlobalSettings::*>(setting.field);
}

[[noreturn]] void reject(const Setting& setting, const std::string& text, const char* wanted) {
    throw Failure(TTS::STATUS_BAD_PARAMETER,
                  std::string(setting.name) + " takes " + wanted + ", not \"" + text + "\"");
}

template <typename Number>
Number parse(const Setting& setting, const std::string& text, const char* wanted) {
    const std::optional<Number> number = numberIn<Number>(text);
    if (!number) {
        reject(setting, text, wanted);
    }
    return *number;
}

bool hasRange(const Setting& setting) {
    return !isLanguage(setting) && setting.which != Switch::Voice;
}

template <typename Number>
Range<double> widened(const Range<Number>& range) {
    return {range.isSupported, static_cast<double>(range.least), static_cast<double>(range.most)};
}

}  // namespace

const std::vector<Setting>& settings() {
    using All = GlobalSettings;
    static const std::vector<Setting> table = {
        {"speed", &All::speed, Switch::Speed, "words a minute"},
        {"pitch", &All::pitch, Switch::Pitch, "height of the voice"},
        {"voice", &All::voice, Switch::Voice, "number or name of a voice of its language"},
        {"volume", &All::volume, Switch::Volume, "loudness of the voice"},
        {"bg-volume", &All::mediaVolume, Switch::MediaVolume,
         "volume of other sound while speaking, percent"},
        {"tts-volume", &All::speechVolume, Switch::SpeechVolume,
         "volume of the speech output, percent"},
        {"language", &All::language, {}, "a language, as in en_US"},
        {"rate", &All::rate, {}, "service-wide rate, words a minute"},
        {"verbosity", &All::verbosity, {}, "0 or 1"},
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

bool hasSwitch(const Setting& setting) {
    return setting.which.has_value();
}

Switch switchNamed(const std::string& name) {
    if (name == "speech") {
        return Switch::Speech;
    }
    const Setting& setting = settingNamed(name);
    if (!setting.which) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, name + " has no switch",
                      "there are speech, " + settingNames(&hasSwitch));
    }
    return *setting.which;
}

std::string valueText(const Value& value) {
    if (const auto* real = std::get_if<float>(&value)) {
        return numberText(static_cast<double>(*real));
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    const auto* whole = std::get_if<std::uint32_t>(&value);
    return whole != nullptr ? std::to_string(*whole)
                            : std::to_string(std::get<std::int32_t>(value));
}

Value valueOf(const GlobalSettings& all, const Setting& setting) {
    const Value value = std::visit(
        [&](auto field) { return all.*field ? Value(*(all.*field)) : Value(std::string()); },
        setting.field);
    return isLanguage(setting) ? codeOf(std::get<std::string>(value)) : value;
}

GlobalSettings only(const Setting& setting, const Value& value) {
    GlobalSettings one;
    std::visit(
        [&](auto field) {
            using Held = typename std::decay_t<decltype(one.*field)>::value_type;
            one.*field = std::get<Held>(value);
        },
        setting.field);
    return one;
}

Value parseValue(const Setting& setting, const std::string& text) {
    if (isLanguage(setting)) {
        return text;
    }
    if (isReal(setting)) {
        const auto real = parse<float>(setting, text, "a number");
        if (std::isnan(real)) {
            reject(setting, text, "a number");
        }
        return real;
    }
    const auto whole = parse<std::uint32_t>(setting, text, "a whole number");
    const bool isSigned =
        std::holds_alternative<std::optional<std::int32_t> GlobalSettings::*>(setting.field);
    return isSigned ? Value(static_cast<std::int32_t>(whole)) : Value(whole);
}

Range<double> rangeOf(const Setting& setting, const Features& can) {
    const std::string name = setting.name;
    if (name == "speed" || name == "rate") {
        return widened(can.speed);
    }
    if (name == "pitch") {
        return widened(can.pitch);
    }
    if (name == "volume") {
        return widened(can.volume);
    }
    return {hasRange(setting), 0, name == "verbosity" ? 1.0 : 100.0};
}

std::string rangeText(const Setting& setting, const Features& can) {
    const Range<double> range = rangeOf(setting, can);
    return range.isSupported ? numberText(range.least) + " to " + numberText(range.most) : "";
}

std::string acceptedText(const Setting& setting, const Features& can) {
    const std::string range = rangeText(setting, can);
    if (!range.empty()) {
        return " (it takes " + range + ")";
    }
    return hasRange(setting) ? " (the service does not support it)" : "";
}

bool isAccepted(const Setting& setting, const Value& value, const Features& can) {
    if (!hasRange(setting)) {
        return true;
    }
    const Range<double> range = rangeOf(setting, can);
    const auto* const real = std::get_if<float>(&value);
    const double number =
        real != nullptr ? static_cast<double>(*real) : std::stod(valueText(value));
    return range.isSupported && number >= range.least && number <= range.most;
}

}  // namespace voxtrelctl
