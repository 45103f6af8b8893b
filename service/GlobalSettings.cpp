// SPDX-License-Identifier: Apache-2.0
#include "service/GlobalSettings.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "service/Engine.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

struct IntegerRow {
    uint32_t TtsSetting::*value;
    VOXTRELAPI_GCONF key;
    uint32_t min, max, fallback;
};

struct FloatRow {
    float TtsSetting::*value;
    VOXTRELAPI_GCONF key;
    float min, max, fallback;
};

struct FlagRow {
    int32_t TtsSetting::*value;
    VOXTRELAPI_GCONF key;
};

// The defaults are those that an upgraded profile gets.
constexpr IntegerRow kIntegers[] = {
    {&TtsSetting::mSpeed, GCONF_SPEED, kSpeedMin, kSpeedMax, 300},
    {&TtsSetting::mMediaVolume, GCONF_BG_VOLUME, 0, 100, 50},
    {&TtsSetting::mTtsVolume, GCONF_TTS_VOLUME, 0, 100, 100},
    {&TtsSetting::mVoice, GCONF_VOICE, 0, 999, 0},
};

constexpr FloatRow kFloats[] = {
    {&TtsSetting::mPitch, GCONF_PITCH, kPitchMin, kPitchMax, 200.0F},
    {&TtsSetting::mVolume, GCONF_VOLUME, kVolumeMin, kVolumeMax, 100.0F},
};

constexpr FlagRow kFlags[] = {
    {&TtsSetting::mSpeedEnable, GCONF_SPEED_ENABLE},
    {&TtsSetting::mPitchEnable, GCONF_PITCH_ENABLE},
    {&TtsSetting::mVoiceEnable, GCONF_VOICE_ENABLE},
    {&TtsSetting::mVolumeEnable, GCONF_VOLUME_ENABLE},
    {&TtsSetting::mMediaVolumeEnable, GCONF_BG_VOLUME_ENABLE},
    {&TtsSetting::mTtsVolumeEnable, GCONF_TTS_VOLUME_ENABLE},
};

template <typename Row, size_t size>
const Row* rowOf(const Row (&rows)[size], VOXTRELAPI_GCONF key) {
    for (const Row& row : rows) {
        if (row.key == key) {
            return &row;
        }
    }
    return nullptr;
}

template <typename Row, typename Value>
bool isInRange(const Row& row, Value value) {
    return value >= row.min && value <= row.max;  // false for NaN
}

/// Keys in the order of their pairs: the flag of a value is the next key.
VOXTRELAPI_GCONF flagOf(VOXTRELAPI_GCONF key) {
    return static_cast<VOXTRELAPI_GCONF>(key + 1);
}

template <typename Value>
Value load(const void* from) {
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <typename Row, typename Value>
int setNumber(TtsSetting& profile, const Row& row, Value value) {
    if (!isInRange(row, value)) {
        return STATUS_BAD_PARAMETER;
    }
    if (profile.*rowOf(kFlags, flagOf(row.key))->value == 0) {
        return STATUS_NOT_SUPPORTED;
    }
    profile.*row.value = value;
    return STATUS_OK;
}

}  // namespace

GlobalSettings::GlobalSettings() : GlobalSettings(TtsSetting("voxtrel")) {}

GlobalSettings::GlobalSettings(const TtsSetting& profile) : mProfile(profile) {
    repair();
}

void GlobalSettings::repair() {
    for (const IntegerRow& row : kIntegers) {
        if (!isInRange(row, mProfile.*row.value)) {
            mProfile.*row.value = row.fallback;
        }
    }
    for (const FloatRow& row : kFloats) {
        if (!isInRange(row, mProfile.*row.value)) {
            mProfile.*row.value = row.fallback;
        }
    }
    if (language() == LANG_NA) {
        mProfile.mLang = TTS::langId2Str(LANG_EN_US);
    }
}

void GlobalSettings::reset() {
    mProfile = GlobalSettings().mProfile;
}

bool GlobalSettings::isSameAs(const GlobalSettings& other) const {
    const TtsSetting& mine = mProfile;
    const TtsSetting& theirs = other.mProfile;
    const auto same = [&](const auto& row) { return mine.*row.value == theirs.*row.value; };
    return std::all_of(std::begin(kIntegers), std::end(kIntegers), same) &&
           std::all_of(std::begin(kFloats), std::end(kFloats), same) &&
           std::all_of(std::begin(kFlags), std::end(kFlags), same) && mine.mLang == theirs.mLang &&
           mine.mVerbosity == theirs.mVerbosity && mine.mEnable == theirs.mEnable;
}

uint32_t GlobalSettings::voiceCount(EN_VOXTREL_LANGUAGE language) const {
    const auto index = static_cast<size_t>(language);
    return index < mVoiceCounts.size() ? static_cast<uint32_t>(mVoiceCounts[index]) : 0;
}

int GlobalSettings::setLanguage(const char* code) {
    const EN_VOXTREL_LANGUAGE wanted = TTS::langStr2Id(code);
    if (voiceCount(wanted) == 0) {
        return STATUS_NOT_SUPPORTED;
    }
    if (wanted != language()) {
        mProfile.mVoice = 0;  // numbers belong to one language
    }
    mProfile.mLang = code;
    return STATUS_OK;
}

int GlobalSettings::setVoice(uint32_t number) {
    if (number > voiceCount(language())) {
        return STATUS_BAD_PARAMETER;
    }
    return setNumber(mProfile, *rowOf(kIntegers, GCONF_VOICE), number);
}

int GlobalSettings::set(VOXTRELAPI_GCONF key, const void* value) {
    if (value == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    if (key == GCONF_LANGUAGE) {
        return setLanguage(static_cast<const char*>(value));
    }
    if (key == GCONF_VOICE) {
        return setVoice(load<uint32_t>(value));
    }
    if (const IntegerRow* row = rowOf(kIntegers, key)) {
        return setNumber(mProfile, *row, load<uint32_t>(value));
    }
    if (const FloatRow* row = rowOf(kFloats, key)) {
        return setNumber(mProfile, *row, load<float>(value));
    }
    return STATUS_BAD_PARAMETER;
}

int GlobalSettings::get(VOXTRELAPI_GCONF key, void* out) const {
    if (out == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    if (key == GCONF_LANGUAGE) {
        std::memcpy(out, mProfile.mLang.c_str(), mProfile.mLang.size() + 1);
        return STATUS_OK;
    }
    if (const IntegerRow* row = rowOf(kIntegers, key)) {
        std::memcpy(out, &(mProfile.*row->value), sizeof(uint32_t));
        return STATUS_OK;
    }
    if (const FloatRow* row = rowOf(kFloats, key)) {
        std::memcpy(out, &(mProfile.*row->value), sizeof(float));
        return STATUS_OK;
    }
    return STATUS_BAD_PARAMETER;
}

int GlobalSettings::setFlag(VOXTRELAPI_GCONF key, bool on) {
    const FlagRow* row = rowOf(kFlags, key);
    if (row == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    mProfile.*row->value = on ? 1 : 0;
    return STATUS_OK;
}

int GlobalSettings::flag(VOXTRELAPI_GCONF key, bool& out) const {
    const FlagRow* row = rowOf(kFlags, key);
    if (row == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    out = mProfile.*row->value != 0;
    return STATUS_OK;
}

int GlobalSettings::setVerbosity(int32_t verbosity) {
    if (verbosity != 0 && verbosity != 1) {
        return STATUS_BAD_PARAMETER;
    }
    mProfile.mVerbosity = verbosity;
    return STATUS_OK;
}

uint32_t GlobalSettings::eventValue(VOXTRELAPI_GCONF key) const {
    bool on = false;
    if (flag(key, on) == STATUS_OK) {
        return on ? 1 : 0;
    }
    if (key == GCONF_LANGUAGE) {
        return static_cast<uint32_t>(language());
    }
    if (const IntegerRow* row = rowOf(kIntegers, key)) {
        return mProfile.*row->value;
    }
    const FloatRow* row = rowOf(kFloats, key);
    return row == nullptr ? 0 : static_cast<uint32_t>(mProfile.*row->value);
}

bool isPitch(float value) {
    return isInRange(*rowOf(kFloats, GCONF_PITCH), value);
}

bool isVolume(float value) {
    return isInRange(*rowOf(kFloats, GCONF_VOLUME), value);
}

bool isSpeed(uint32_t value) {
    return isInRange(*rowOf(kIntegers, GCONF_SPEED), value);
}

}  // namespace voxtreld
