// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILE_INTERNAL_PROFILEKEYS_H
#define VOXTREL_PROFILE_INTERNAL_PROFILEKEYS_H

#include <cstdint>
#include <string>

#include "profile/TtsSetting.h"

namespace TTS {

/// What stands behind a key of a profile.
enum class ProfileValue : uint8_t {
    kVersion,   ///< of the format; compared when it is read, never stored
    kSwitch,    ///< 0 or 1; others are neither written nor stored
    kPercent,   ///< stored if it is 0 to 100
    kNumber,    ///< any of 32 bits
    kFraction,  ///< six significant digits; read as a whole number, as readers have always done
    kText,      ///< the rest of the line
    kReadOnly,  ///< any number of 32 bits; never written
};

/// A key of a profile and its field. The name stands in the row itself: a pointer to each would be
/// one more for the loader to mend.
struct ProfileKey {
    union Field {
        constexpr Field(int32_t TtsSetting::*which) : integer(which) {}
        constexpr Field(uint32_t TtsSetting::*which) : number(which) {}
        constexpr Field(float TtsSetting::*which) : fraction(which) {}
        constexpr Field(std::string TtsSetting::*which) : text(which) {}

        int32_t TtsSetting::*integer;  ///< of kVersion, kSwitch and kReadOnly
        uint32_t TtsSetting::*number;  ///< of kPercent and kNumber
        float TtsSetting::*fraction;
        std::string TtsSetting::*text;
    };

    char name[21];
    ProfileValue value;
    Field field;
};

/// All keys, in the order in which they are written.
inline constexpr ProfileKey kProfileKeys[] = {
    {"version", ProfileValue::kVersion, &TtsSetting::mVersion},
    {"speed_enable", ProfileValue::kSwitch, &TtsSetting::mSpeedEnable},
    {"speed", ProfileValue::kNumber, &TtsSetting::mSpeed},
    {"volume_enable", ProfileValue::kSwitch, &TtsSetting::mVolumeEnable},
    {"volume", ProfileValue::kFraction, &TtsSetting::mVolume},
    {"media_volume_enable", ProfileValue::kSwitch, &TtsSetting::mMediaVolumeEnable},
    {"media_volume", ProfileValue::kPercent, &TtsSetting::mMediaVolume},
    {"tts_volume_enable", ProfileValue::kSwitch, &TtsSetting::mTtsVolumeEnable},
    {"tts_volume", ProfileValue::kPercent, &TtsSetting::mTtsVolume},
    {"voice_enable", ProfileValue::kSwitch, &TtsSetting::mVoiceEnable},
    {"voice", ProfileValue::kNumber, &TtsSetting::mVoice},
    {"pitch_enable", ProfileValue::kSwitch, &TtsSetting::mPitchEnable},
    {"pitch", ProfileValue::kFraction, &TtsSetting::mPitch},
    {"lang", ProfileValue::kText, &TtsSetting::mLang},
    {"verbosity", ProfileValue::kSwitch, &TtsSetting::mVerbosity},
    {"enable", ProfileValue::kSwitch, &TtsSetting::mEnable},
    {"sample_rate", ProfileValue::kReadOnly, &TtsSetting::mSampleRate},
    {"channels", ProfileValue::kReadOnly, &TtsSetting::mChannels},
    {"mixer_path", ProfileValue::kReadOnly, &TtsSetting::mMixerPath},
    {"long_break_duration", ProfileValue::kReadOnly, &TtsSetting::mLongBreakDuration},
    {"short_break_duration", ProfileValue::kReadOnly, &TtsSetting::mShortBreakDuration},
};

}  // namespace TTS

#endif
