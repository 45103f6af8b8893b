// SPDX-License-Identifier: Apache-2.0
#include "profile/internal/ProfileWriter.h"

#include <locale.h>

#include <cstdio>

namespace TTS {
namespace {

/// While it lives, this thread writes numbers as the "C" locale does: an application's own may have
/// commas for the point.
class ClassicNumbers {
public:
    ClassicNumbers()
        : mClassic(newlocale(LC_ALL_MASK, "C", nullptr)), mBefore(uselocale(mClassic)) {}
    ~ClassicNumbers() {
        uselocale(mBefore);
        freelocale(mClassic);
    }
    ClassicNumbers(const ClassicNumbers&) = delete;
    ClassicNumbers& operator=(const ClassicNumbers&) = delete;

private:
    const locale_t mClassic;
    const locale_t mBefore;
};

template <typename Number>
void addNumber(std::string& text, const char* format, const char* key, Number value) {
    char line[64];  // the longest key and the longest number have half of that
    const int length = std::snprintf(line, sizeof line, format, key, value);
    text.append(line, static_cast<size_t>(length));
}

void add(std::string& text, const char* key, uint32_t value) {
    addNumber(text, "%s=%u\n", key, value);
}

void add(std::string& text, const char* key, int32_t value) {
    addNumber(text, "%s=%d\n", key, value);
}

void add(std::string& text, const char* key, float value) {
    addNumber(text, "%s=%g\n", key, static_cast<double>(value));
}

void addSwitch(std::string& text, const char* key, int32_t value) {
    if (value == 0 || value == 1) {
        add(text, key, value);
    }
}

}  // namespace

std::string profileText(const TtsSetting& setting) {
    const ClassicNumbers numbers;
    std::string text = "\n";
    add(text, "version", setting.mVersion);
    addSwitch(text, "speed_enable", setting.mSpeedEnable);
    add(text, "speed", setting.mSpeed);
    addSwitch(text, "volume_enable", setting.mVolumeEnable);
    add(text, "volume", setting.mVolume);
    addSwitch(text, "media_volume_enable", setting.mMediaVolumeEnable);
    add(text, "media_volume", setting.mMediaVolume);
    addSwitch(text, "tts_volume_enable", setting.mTtsVolumeEnable);
    add(text, "tts_volume", setting.mTtsVolume);
    addSwitch(text, "voice_enable", setting.mVoiceEnable);
    add(text, "voice", setting.mVoice);
    addSwitch(text, "pitch_enable", setting.mPitchEnable);
    add(text, "pitch", setting.mPitch);
    text.append("lang=").append(setting.mLang).append("\n");
    addSwitch(text, "verbosity", setting.mVerbosity);
    addSwitch(text, "enable", setting.mEnable);
    return text.append("\n");
}

}  // namespace TTS
