// SPDX-License-Identifier: Apache-2.0
#include "tools/ProfileFields.h"

#include <gtest/gtest.h>

#include <set>

#include "tools/ProfileFile.h"

using namespace voxtrelctl;

namespace {

TEST(APath, IsTakenAsItIs) {
    EXPECT_EQ(profilePath("/tmp/a.ini"), "/tmp/a.ini");
    EXPECT_EQ(profilePath("./a"), "./a");
    EXPECT_EQ(profilePath("a.ini"), "a.ini");
}

TEST(ABareName, IsAProfileOfTheDevice) {
    EXPECT_EQ(profilePath("radio"), "/Customer/radio.ini");
    EXPECT_EQ(profilePath("ini"), "/Customer/ini.ini");
}

TEST(AProfile, IsListedWithEveryKeyOfItsFile) {
    const Profile fresh("x");
    std::set<std::string> keys;
    for (const ProfileEntry& entry : profileEntries(fresh)) {
        EXPECT_TRUE(keys.insert(entry.key).second) << entry.key;
    }
    EXPECT_EQ(keys.size(), 20U);
}

TEST(AFreshProfile, HasNothingSet) {
    const Profile fresh("x");
    for (const ProfileField& field : profileFields()) {
        EXPECT_FALSE(isSet(fieldValue(fresh, field))) << field.setting;
    }
}

TEST(AField, TakesAndGivesItsValue) {
    const std::vector<Value> values = {std::string("ko_KR"), uint32_t{2}, uint32_t{3}, 4.5F, 5.0F,
                                       uint32_t{6},          uint32_t{7}};
    ASSERT_EQ(profileFields().size(), values.size());
    Profile profile("x");
    for (size_t n = 0; n < values.size(); ++n) {
        setField(profile, profileFields()[n], values[n]);
    }
    for (size_t n = 0; n < values.size(); ++n) {
        EXPECT_EQ(fieldValue(profile, profileFields()[n]), values[n]);
        EXPECT_TRUE(isSet(values[n]));
    }
    EXPECT_EQ(profile.mLang, "ko_KR");
    EXPECT_EQ(profile.mVoice, 2U);
    EXPECT_EQ(profile.mSpeed, 3U);
    EXPECT_EQ(profile.mPitch, 4.5F);
    EXPECT_EQ(profile.mVolume, 5.0F);
    EXPECT_EQ(profile.mMediaVolume, 6U);
    EXPECT_EQ(profile.mTtsVolume, 7U);
}

TEST(EveryField, IsASettingOfTheCommandLine) {
    for (const ProfileField& field : profileFields()) {
        const Setting* setting = findSetting(field.setting);
        ASSERT_NE(setting, nullptr) << field.setting;
        EXPECT_EQ(hasFlag(*setting), field.flag != nullptr) << field.setting;
    }
}

}  // namespace
