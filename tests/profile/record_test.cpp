// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <type_traits>

#include "profile/TtsSetting.h"
#include "tests/profile/SettingText.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::allChanged;
using voxtrel_test::textOf;

TEST(AFreshSetting, HoldsUnsetValuesAndEverythingEnabled) {
    EXPECT_EQ("app|65535|65535|65535|65535|65535|65535|na_NL|0|1|1|1|1|1|1|1|48000|2|1|2|0|0",
              textOf(TtsSetting("app")));
}

TEST(ASetting, TakesItsNameByValue) {
    std::string name = "app";
    const TtsSetting setting(name);
    name = "changed";
    EXPECT_EQ("app", setting.mName);
}

TEST(ASetting, IsAPlainValue) {
    static_assert(!std::is_polymorphic<TtsSetting>::value, "no virtual functions");
    TtsSetting original = allChanged();
    const TtsSetting copy = original;
    original.mLang = "fr_FR";
    original.mSpeed = 1;
    EXPECT_EQ(textOf(allChanged()), textOf(copy));
}

TEST(ASetting, DeclaresItsFieldsInOrder) {
    const TtsSetting s("app");
    const void* fields[] = {&s.mName,
                            &s.mSpeed,
                            &s.mVolume,
                            &s.mMediaVolume,
                            &s.mTtsVolume,
                            &s.mVoice,
                            &s.mPitch,
                            &s.mLang,
                            &s.mVerbosity,
                            &s.mEnable,
                            &s.mSpeedEnable,
                            &s.mPitchEnable,
                            &s.mVoiceEnable,
                            &s.mVolumeEnable,
                            &s.mMediaVolumeEnable,
                            &s.mTtsVolumeEnable,
                            &s.mSampleRate,
                            &s.mChannels,
                            &s.mMixerPath,
                            &s.mVersion,
                            &s.mLongBreakDuration,
                            &s.mShortBreakDuration};
    EXPECT_EQ(static_cast<const void*>(&s), fields[0]);
    for (size_t i = 1; i < std::size(fields); ++i) {
        EXPECT_LT(fields[i - 1], fields[i]) << "field " << i;
    }
}

template <typename Expected, typename... Fields>
constexpr bool allAre(Fields TtsSetting::*...) {
    return (std::is_same<Expected, Fields>::value && ...);
}

TEST(ASetting, HasFieldsOfFixedWidth) {
    using S = TtsSetting;
    static_assert(allAre<uint32_t>(&S::mSpeed, &S::mMediaVolume, &S::mTtsVolume, &S::mVoice), "");
    static_assert(allAre<float>(&S::mVolume, &S::mPitch), "");
    static_assert(allAre<std::string>(&S::mName, &S::mLang), "");
    static_assert(
        allAre<int32_t>(&S::mVerbosity, &S::mEnable, &S::mSpeedEnable, &S::mPitchEnable,
                        &S::mVoiceEnable, &S::mVolumeEnable, &S::mMediaVolumeEnable,
                        &S::mTtsVolumeEnable, &S::mSampleRate, &S::mChannels, &S::mMixerPath,
                        &S::mVersion, &S::mLongBreakDuration, &S::mShortBreakDuration),
        "");
}

}  // namespace
