// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/Profile.h"

#include <cmath>
#include <iterator>

#include "vocabulary/Language.h"
#include "voxtrel/ProfileFile.h"
#include "voxtrel/session/SpeechRules.h"

namespace voxtrel {
namespace {

using TTS::TtsSetting;

struct SwitchField {
    Switch which;
    std::int32_t TtsSetting::*field;
};

constexpr SwitchField kSwitches[] = {
    {Switch::Speech, &TtsSetting::mEnable},
    {Switch::Speed, &TtsSetting::mSpeedEnable},
    {Switch::Pitch, &TtsSetting::mPitchEnable},
    {Switch::Voice, &TtsSetting::mVoiceEnable},
    {Switch::Volume, &TtsSetting::mVolumeEnable},
    {Switch::MediaVolume, &TtsSetting::mMediaVolumeEnable},
    {Switch::SpeechVolume, &TtsSetting::mTtsVolumeEnable},
};

template <typename Number>
void put(const std::optional<Number>& value, Number& field) {
    if (value) {
        field = *value;
    }
}

template <typename Number>
std::optional<Number> get(Number field) {
    return field == static_cast<Number>(WireSettings::kNotSet) ? std::nullopt
                                                               : std::optional<Number>(field);
}

TtsSetting toSetting(const Profile& profile) {
    const GlobalSettings& settings = profile.settings;
    TtsSetting setting("");
    put(settings.voice, setting.mVoice);
    put(settings.speed, setting.mSpeed);
    put(settings.pitch, setting.mPitch);
    put(settings.volume, setting.mVolume);
    put(settings.speechVolume, setting.mTtsVolume);
    put(settings.mediaVolume, setting.mMediaVolume);
    put(settings.verbosity, setting.mVerbosity);
    setting.mPitch = std::round(setting.mPitch);
    setting.mVolume = std::round(setting.mVolume);
    if (settings.language) {
        setting.mLang = TTS::langId2Str(languageOf(*settings.language).value_or(LANG_NA));
    }
    for (const SwitchField& each : kSwitches) {
        setting.*each.field = profile.switchedOff.count(each.which) == 0 ? 1 : 0;
    }
    return setting;
}

bool isSame(const TtsSetting& a, const TtsSetting& b) {
    return a.mSpeed == b.mSpeed && a.mPitch == b.mPitch && a.mVolume == b.mVolume &&
           a.mTtsVolume == b.mTtsVolume && a.mMediaVolume == b.mMediaVolume &&
           a.mVerbosity == b.mVerbosity;
}

}  // namespace

std::string Profile::pathOf(const std::string& name) {
    return TtsSetting::defaultPath(name);
}

Result<Profile> Profile::read(const std::string& path) {
    const Result<TtsSetting> read = readProfile(path);
    if (!read) {
        return read.error();
    }
    const TtsSetting& setting = *read;
    Profile profile;
    const EN_VOXTREL_LANGUAGE language = TTS::langStr2Id(setting.mLang);
    if (language < LANG_NA) {
        profile.settings.language = tagOf(language);
    }
    profile.settings.voice = get(setting.mVoice);
    profile.settings.speed = get(setting.mSpeed);
    profile.settings.pitch = get(setting.mPitch);
    profile.settings.volume = get(setting.mVolume);
    profile.settings.speechVolume = get(setting.mTtsVolume);
    profile.settings.mediaVolume = get(setting.mMediaVolume);
    profile.settings.verbosity = setting.mVerbosity;
    for (const SwitchField& each : kSwitches) {
        if (setting.*each.field == 0) {
            profile.switchedOff.insert(each.which);
        }
    }
    profile.sampleRate = setting.mSampleRate;
    profile.channels = setting.mChannels;
    profile.mixerPath = setting.mMixerPath;
    profile.longBreakDuration = setting.mLongBreakDuration;
    profile.shortBreakDuration = setting.mShortBreakDuration;
    return profile;
}

Result<void> Profile::write(const std::string& path) const {
    if (settings.language && !languageOf(*settings.language)) {
        return Error{Status::BadParameter, "a profile has no such language"};
    }
    const TtsSetting setting = toSetting(*this);
    if (!isSame(setting, rereadProfile(setting))) {
        return Error{Status::BadParameter, "a profile cannot hold so large a number"};
    }
    return replaceProfile(path, setting);
}

}  // namespace voxtrel
