// SPDX-License-Identifier: Apache-2.0
#include "service/SettingsText.h"

#include <cctype>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "service/GlobalSettings.h"

namespace voxtreld {
namespace {

using TTS::TtsSetting;

template <typename Field>
struct Row {
    std::string_view key;
    Field TtsSetting::*field;
    Field highest;  ///< the lowest is 0
};

constexpr Row<uint32_t> kIntegers[] = {
    {"speed", &TtsSetting::mSpeed, kUnset},
    {"media_volume", &TtsSetting::mMediaVolume, 100},
    {"tts_volume", &TtsSetting::mTtsVolume, 100},
    {"voice", &TtsSetting::mVoice, kUnset},
};

constexpr Row<float> kFloats[] = {
    {"volume", &TtsSetting::mVolume, kUnset},
    {"pitch", &TtsSetting::mPitch, kUnset},
};

constexpr Row<int32_t> kSwitches[] = {
    {"speed_enable", &TtsSetting::mSpeedEnable, 1},
    {"volume_enable", &TtsSetting::mVolumeEnable, 1},
    {"media_volume_enable", &TtsSetting::mMediaVolumeEnable, 1},
    {"tts_volume_enable", &TtsSetting::mTtsVolumeEnable, 1},
    {"voice_enable", &TtsSetting::mVoiceEnable, 1},
    {"pitch_enable", &TtsSetting::mPitchEnable, 1},
    {"verbosity", &TtsSetting::mVerbosity, 1},
    {"enable", &TtsSetting::mEnable, 1},
};

/// The number that a value begins with, in any locale; none if it begins with something else.
std::optional<double> numberIn(std::string_view value) {
    while (!value.empty() && std::isspace(static_cast<unsigned char>(value.front())) != 0) {
        value.remove_prefix(1);
    }
    const bool isNegative = !value.empty() && value.front() == '-';
    if (!value.empty() && (value.front() == '-' || value.front() == '+')) {
        value.remove_prefix(1);
    }
    if (value.empty() || std::isdigit(static_cast<unsigned char>(value.front())) == 0) {
        return std::nullopt;
    }
    double number = 0;
    const auto end = value.data() + value.size();
    if (std::from_chars(value.data(), end, number).ec != std::errc()) {
        number = std::numeric_limits<double>::max();
    }
    return isNegative ? -number : number;
}

template <typename Field, size_t size>
void store(const Row<Field> (&rows)[size], std::string_view key, double number,
           TtsSetting& settings) {
    for (const Row<Field>& row : rows) {
        if (row.key == key && number >= 0 && number <= static_cast<double>(row.highest)) {
            settings.*row.field = static_cast<Field>(number);
        }
    }
}

void readLine(std::string_view line, TtsSetting& settings) {
    const size_t separator = line.find('=');
    if (separator == std::string_view::npos) {
        return;
    }
    const std::string_view key = line.substr(0, separator);
    const std::string_view value = line.substr(separator + 1);
    if (key == "lang") {
        settings.mLang = std::string(value);
    } else if (const std::optional<double> number = numberIn(value)) {
        store(kIntegers, key, *number, settings);
        store(kFloats, key, *number, settings);
        store(kSwitches, key, *number, settings);
    }
}

template <typename Field, size_t size>
void append(const Row<Field> (&rows)[size], const TtsSetting& settings, std::string& text) {
    for (const Row<Field>& row : rows) {
        char digits[32];  // the shortest text that parses to the same value
        const auto end = std::to_chars(digits, digits + sizeof digits, settings.*row.field).ptr;
        text.append(row.key).append("=").append(digits, end).append("\n");
    }
}

}  // namespace

TtsSetting readSettings(const std::string& text) {
    TtsSetting settings("voxtrel");
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        readLine(line, settings);
    }
    return settings;
}

std::string writeSettings(const TtsSetting& settings) {
    std::string text = "lang=" + settings.mLang + "\n";
    append(kIntegers, settings, text);
    append(kFloats, settings, text);
    append(kSwitches, settings, text);
    return text;
}

}  // namespace voxtreld
