// SPDX-License-Identifier: Apache-2.0
#include "profile/internal/ProfileWriter.h"

namespace TTS {
namespace {

void writeSwitch(std::ostream& file, const char* key, int32_t value) {
    if (value == 0 || value == 1) {
        file << key << '=' << value << std::endl;
    }
}

}  // namespace

// The endings are std::endl on purpose: each line is handed to the system before the next is made.
void writeProfile(std::ostream& file, const TtsSetting& setting) {
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

}  // namespace TTS
