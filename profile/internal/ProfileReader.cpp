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

/// The names stand in the row itself: a pointer to each would be one more for the loader to mend.
template <typename T>
struct NumberKey {
    char name[21];
    uint32_t highest;  // compared unsigned, so that negative values fall out as well
    T TtsSetting::*field;
};

constexpr NumberKey<int32_t> kIntegerKeys[] = {
    {"speed_enable", kSwitch, &TtsSetting::mSpeedEnable},
    {"volume_enable", kSwitch, &TtsSetting::mVolumeEnable},
    {"media_volume_enable", kSwitch, &TtsSetting::mMediaVolumeEnable},
    {"tts_volume_enable", kSwitch, &TtsSetting::mTtsVolumeEnable},
    {"voice_enable", kSwitch, &TtsSetting::mVoiceEnable},
    {"pitch_enable", kSwitch, &TtsSetting::mPitchEnable},
    {"verbosity", kSwitch, &TtsSetting::mVerbosity},
    {"enable", kSwitch, &TtsSetting::mEnable},
    {"sample_rate", kAny, &TtsSetting::mSampleRate},
    {"channels", kAny, &TtsSetting::mChannels},
    {"mixer_path", kAny, &TtsSetting::mMixerPath},
    {"long_break_duration", kAny, &TtsSetting::mLongBreakDuration},
    {"short_break_duration", kAny, &TtsSetting::mShortBreakDuration},
};

constexpr NumberKey<uint32_t> kUnsignedKeys[] = {
    {"speed", kAny, &TtsSetting::mSpeed},
    {"media_volume", kPercent, &TtsSetting::mMediaVolume},
    {"tts_volume", kPercent, &TtsSetting::mTtsVolume},
    {"voice", kAny, &TtsSetting::mVoice},
};

// Whole numbers here although the writer can write fractions: the format's readers have always cut
// them.
constexpr NumberKey<float> kFloatKeys[] = {
    {"volume", kAny, &TtsSetting::mVolume},
    {"pitch", kAny, &TtsSetting::mPitch},
};

// A device's `long` has 32 bits; a PC must read the same number from the same file.
int32_t numberIn(const char* text) {
    constexpr long kLowest = std::numeric_limits<int32_t>::min();
    constexpr long kHighest = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::clamp(std::strtol(text, nullptr, 10), kLowest, kHighest));
}

template <typename T, size_t kCount>
void store(const NumberKey<T> (&keys)[kCount], TtsSetting& setting, std::string_view key,
           int32_t value) {
    for (const NumberKey<T>& row : keys) {
        if (row.name == key && static_cast<uint32_t>(value) <= row.highest) {
            setting.*row.field = static_cast<T>(value);
        }
    }
}

void storeNumber(TtsSetting& setting, std::string_view key, int32_t value) {
    store(kIntegerKeys, setting, key, value);
    store(kUnsignedKeys, setting, key, value);
    store(kFloatKeys, setting, key, value);
}

/// Applies one line. @return true if it says that the file has the current version.
bool applyTo(TtsSetting& setting, const std::string& line) {
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

void ProfileReader::take(const char* bytes, size_t size) {
    const std::string_view all(bytes, size);
    size_t start = 0;
    for (size_t end = 0; (end = all.find('\n', start)) != std::string_view::npos; start = end + 1) {
        mLine.append(bytes + start, end - start);
        applyLine();
    }
    mLine.append(bytes + start, size - start);
}

void ProfileReader::applyLine() {
    mIsCurrent = applyTo(mSetting, mLine) || mIsCurrent;
    mLine.clear();
}

}  // namespace TTS
