// SPDX-License-Identifier: Apache-2.0
#include "profile/internal/ProfileReader.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

namespace TTS {
namespace {

constexpr uint32_t kSwitch = 1;
constexpr uint32_t kPercent = 100;
constexpr uint32_t kAny = std::numeric_limits<uint32_t>::max();

struct NumberKey {
    std::string_view name;
    uint32_t highest;  // compared unsigned, so that negative values fall out as well
    void (*store)(TtsSetting& setting, int32_t value);
};

// Volume and pitch are whole numbers here although the writer can write fractions: the format's
// readers have always cut them.
constexpr NumberKey kNumberKeys[] = {
    {"speed_enable", kSwitch, [](TtsSetting& s, int32_t v) { s.mSpeedEnable = v; }},
    {"speed", kAny, [](TtsSetting& s, int32_t v) { s.mSpeed = static_cast<uint32_t>(v); }},
    {"volume_enable", kSwitch, [](TtsSetting& s, int32_t v) { s.mVolumeEnable = v; }},
    {"volume", kAny, [](TtsSetting& s, int32_t v) { s.mVolume = static_cast<float>(v); }},
    {"media_volume_enable", kSwitch, [](TtsSetting& s, int32_t v) { s.mMediaVolumeEnable = v; }},
    {"media_volume", kPercent,
     [](TtsSetting& s, int32_t v) { s.mMediaVolume = static_cast<uint32_t>(v); }},
    {"tts_volume_enable", kSwitch, [](TtsSetting& s, int32_t v) { s.mTtsVolumeEnable = v; }},
    {"tts_volume", kPercent,
     [](TtsSetting& s, int32_t v) { s.mTtsVolume = static_cast<uint32_t>(v); }},
    {"voice_enable", kSwitch, [](TtsSetting& s, int32_t v) { s.mVoiceEnable = v; }},
    {"voice", kAny, [](TtsSetting& s, int32_t v) { s.mVoice = static_cast<uint32_t>(v); }},
    {"pitch_enable", kSwitch, [](TtsSetting& s, int32_t v) { s.mPitchEnable = v; }},
    {"pitch", kAny, [](TtsSetting& s, int32_t v) { s.mPitch = static_cast<float>(v); }},
    {"verbosity", kSwitch, [](TtsSetting& s, int32_t v) { s.mVerbosity = v; }},
    {"enable", kSwitch, [](TtsSetting& s, int32_t v) { s.mEnable = v; }},
    {"sample_rate", kAny, [](TtsSetting& s, int32_t v) { s.mSampleRate = v; }},
    {"channels", kAny, [](TtsSetting& s, int32_t v) { s.mChannels = v; }},
    {"mixer_path", kAny, [](TtsSetting& s, int32_t v) { s.mMixerPath = v; }},
    {"long_break_duration", kAny, [](TtsSetting& s, int32_t v) { s.mLongBreakDuration = v; }},
    {"short_break_duration", kAny, [](TtsSetting& s, int32_t v) { s.mShortBreakDuration = v; }},
};

// A device's `long` has 32 bits; a PC must read the same number from the same file.
int32_t numberIn(const char* text) {
    constexpr long kLowest = std::numeric_limits<int32_t>::min();
    constexpr long kHighest = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::clamp(std::strtol(text, nullptr, 10), kLowest, kHighest));
}

void storeNumber(TtsSetting& setting, std::string_view key, int32_t value) {
    for (const NumberKey& row : kNumberKeys) {
        if (row.name == key && static_cast<uint32_t>(value) <= row.highest) {
            row.store(setting, value);
        }
    }
}

/// Applies one line. @return true if it says that the file has the current version.
bool applyLine(TtsSetting& setting, const std::string& line) {
    const size_t separator = line.find('=');
    if (separator == std::string::npos) {
        return false;
    }
    const std::string_view key(line.data(), separator);
    const char* value = line.c_str() + separator + 1;
    if (key == "version") {
        return numberIn(value) == setting.mVersion;
    }
    if (key == "lang") {
        setting.mLang = line.substr(separator + 1);
    } else {
        storeNumber(setting, key, numberIn(value));
    }
    return false;
}

}  // namespace

bool readProfile(std::istream& file, TtsSetting& setting) {
    bool isCurrent = false;
    std::string line;
    while (std::getline(file, line)) {
        isCurrent = applyLine(setting, line) || isCurrent;
    }
    return isCurrent;
}

}  // namespace TTS
