// SPDX-License-Identifier: Apache-2.0
#include "tools/ProfileFields.h"

#include "vocabulary/Language.h"

namespace voxtrelctl {
namespace {

constexpr uint32_t kUnset = 65535;

}  // namespace

std::vector<ProfileEntry> profileEntries(const Profile& p) {
    return {
        {"speed_enable", p.mSpeedEnable},
        {"speed", p.mSpeed},
        {"volume_enable", p.mVolumeEnable},
        {"volume", p.mVolume},
        {"media_volume_enable", p.mMediaVolumeEnable},
        {"media_volume", p.mMediaVolume},
        {"tts_volume_enable", p.mTtsVolumeEnable},
        {"tts_volume", p.mTtsVolume},
        {"voice_enable", p.mVoiceEnable},
        {"voice", p.mVoice},
        {"pitch_enable", p.mPitchEnable},
        {"pitch", p.mPitch},
        {"lang", p.mLang},
        {"verbosity", p.mVerbosity},
        {"enable", p.mEnable},
        {"sample_rate", p.mSampleRate},
        {"channels", p.mChannels},
        {"mixer_path", p.mMixerPath},
        {"long_break_duration", p.mLongBreakDuration},
        {"short_break_duration", p.mShortBreakDuration},
    };
}

const std::vector<ProfileField>& profileFields() {
    static const std::vector<ProfileField> fields = {
        {"language", nullptr, nullptr, &Profile::mLang, nullptr},
        {"voice", &Profile::mVoice, nullptr, nullptr, &Profile::mVoiceEnable},
        {"speed", &Profile::mSpeed, nullptr, nullptr, &Profile::mSpeedEnable},
        {"pitch", nullptr, &Profile::mPitch, nullptr, &Profile::mPitchEnable},
        {"volume", nullptr, &Profile::mVolume, nullptr, &Profile::mVolumeEnable},
        {"bg-volume", &Profile::mMediaVolume, nullptr, nullptr, &Profile::mMediaVolumeEnable},
        {"tts-volume", &Profile::mTtsVolume, nullptr, nullptr, &Profile::mTtsVolumeEnable},
    };
    return fields;
}

Value fieldValue(const Profile& profile, const ProfileField& field) {
    if (field.whole != nullptr) {
        return profile.*field.whole;
    }
    if (field.real != nullptr) {
        return profile.*field.real;
    }
    return profile.*field.code;
}

void setField(Profile& profile, const ProfileField& field, const Value& value) {
    if (field.whole != nullptr) {
        profile.*field.whole = std::get<uint32_t>(value);
    } else if (field.real != nullptr) {
        profile.*field.real = std::get<float>(value);
    } else {
        profile.*field.code = std::get<std::string>(value);
    }
}

bool isSet(const Value& value) {
    if (const auto* whole = std::get_if<uint32_t>(&value)) {
        return *whole != kUnset;
    }
    if (const auto* real = std::get_if<float>(&value)) {
        return *real != static_cast<float>(kUnset);
    }
    const auto* code = std::get_if<std::string>(&value);
    return code == nullptr || TTS::langStr2Id(*code) != LANG_NA;
}

}  // namespace voxtrelctl
