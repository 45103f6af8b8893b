// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_PROFILE_SETTINGTEXT_H
#define VOXTREL_TESTS_PROFILE_SETTINGTEXT_H

#include <sstream>
#include <string>

#include "profile/TtsSetting.h"

namespace voxtrel_test {

/// Every field of a setting, in declaration order: two settings are equal when their texts are.
inline std::string textOf(const TTS::TtsSetting& s) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << s.mName << '|' << s.mSpeed << '|' << s.mVolume << '|' << s.mMediaVolume << '|'
         << s.mTtsVolume << '|' << s.mVoice << '|' << s.mPitch << '|' << s.mLang << '|'
         << s.mVerbosity << '|' << s.mEnable << '|' << s.mSpeedEnable << '|' << s.mPitchEnable
         << '|' << s.mVoiceEnable << '|' << s.mVolumeEnable << '|' << s.mMediaVolumeEnable << '|'
         << s.mTtsVolumeEnable << '|' << s.mSampleRate << '|' << s.mChannels << '|' << s.mMixerPath
         << '|' << s.mVersion << '|' << s.mLongBreakDuration << '|' << s.mShortBreakDuration;
    return text.str();
}

/// A setting in which no field has the value that the constructor gives it.
inline TTS::TtsSetting allChanged() {
    TTS::TtsSetting s("other");
    s.mSpeed = 310;
    s.mVolume = 81;
    s.mMediaVolume = 42;
    s.mTtsVolume = 93;
    s.mVoice = 4;
    s.mPitch = 205;
    s.mLang = "ko_KR";
    s.mVerbosity = 1;
    s.mEnable = 0;
    s.mSpeedEnable = 0;
    s.mPitchEnable = 0;
    s.mVoiceEnable = 0;
    s.mVolumeEnable = 0;
    s.mMediaVolumeEnable = 0;
    s.mTtsVolumeEnable = 0;
    s.mSampleRate = 16000;
    s.mChannels = 1;
    s.mMixerPath = 6;
    s.mVersion = 2;
    s.mLongBreakDuration = 700;
    s.mShortBreakDuration = 150;
    return s;
}

}  // namespace voxtrel_test

#endif
