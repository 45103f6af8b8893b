// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <locale>
#include <tuple>

#include "profile/TtsSetting.h"

namespace TTS {
namespace {

void writeSwitch(std::ostream& file, const char* key, int32_t value) {
    if (value == 0 || value == 1) {
        file << key << '=' << value << std::endl;
    }
}

// The endings are std::endl on purpose: each line is handed to the system before the next is made.
void writeLines(std::ostream& file, const TtsSetting& setting) {
    file << std::endl;
    file << "version=" << setting.mVersion << std::endl;
    writeSwitch(file, "speed_enable", setting.mSpeedEnable);
    file << "speed=" << setting.mSpeed << std::endl;
    writeSwitch(file, "volume_enable", setting.mVolumeEnable);
    file << "volume=" << setting.mVolume << std::endl;
    writeSwitch(file, "media_volume_enable", setting.mMediaVolumeEnable);
    file << "media_volume=" << setting.mMediaVolume << std::endl;
    writeSwitch(file, "tts_volume_enable", setting.mTtsVolumeEnable);
    file << "tts_volume=" << setting.mTtsVolume << std::endl;
    writeSwitch(file, "voice_enable", setting.mVoiceEnable);
    file << "voice=" << setting.mVoice << std::endl;
    writeSwitch(file, "pitch_enable", setting.mPitchEnable);
    file << "pitch=" << setting.mPitch << std::endl;
    file << "lang=" << setting.mLang << std::endl;
    writeSwitch(file, "verbosity", setting.mVerbosity);
    writeSwitch(file, "enable", setting.mEnable);
    file << std::endl;
}

}  // namespace

bool TtsSetting::serialize(const char* path) const {
    const std::string name = fileOf(path);
    std::fstream file;
    // An application's own locale may put commas and thousands marks into the numbers.
    file.imbue(std::locale::classic());
    file.open(name, std::ios::in | std::ios::out | std::ios::trunc);
    if (!file.is_open()) {
        std::printf("[TtsSetting] Error while writing tts profile %s\n", name.c_str());
        return false;
    }
    writeLines(file, *this);
    // Safe between threads with the device's C library; there is nothing to do about a failure.
    std::ignore = std::system("/bin/sync");  // NOLINT(concurrency-mt-unsafe)
    file.close();
    return true;
}

}  // namespace TTS
