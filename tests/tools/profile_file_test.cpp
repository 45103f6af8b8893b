// SPDX-License-Identifier: Apache-2.0
#include "tools/ProfileFile.h"

#include <gtest/gtest.h>

#include <set>

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

std::string valueIn(const voxtrel::Profile& profile, const std::string& key) {
    for (const ProfileEntry& entry : profileEntries(profile)) {
        if (entry.key == key) {
            return valueText(entry.value);
        }
    }
    return "absent";
}

TEST(AProfile, IsListedWithEveryKeyOfItsFile) {
    std::set<std::string> keys;
    for (const ProfileEntry& entry : profileEntries({})) {
        EXPECT_TRUE(keys.insert(entry.key).second) << entry.key;
    }
    EXPECT_EQ(keys.size(), 20U);
}

TEST(AProfile, IsListedAsItsFileHasIt) {
    voxtrel::Profile profile;
    EXPECT_EQ(valueIn(profile, "speed"), "65535");
    EXPECT_EQ(valueIn(profile, "pitch"), "65535");
    EXPECT_EQ(valueIn(profile, "lang"), "na_NL");
    EXPECT_EQ(valueIn(profile, "enable"), "1");
    profile.settings.speed = 200;
    profile.settings.language = "fr-FR";
    profile.switchedOff = {voxtrel::Switch::Speech, voxtrel::Switch::MediaVolume};
    profile.sampleRate = 48000;
    EXPECT_EQ(valueIn(profile, "speed"), "200");
    EXPECT_EQ(valueIn(profile, "lang"), "fr_FR");
    EXPECT_EQ(valueIn(profile, "enable"), "0");
    EXPECT_EQ(valueIn(profile, "media_volume_enable"), "0");
    EXPECT_EQ(valueIn(profile, "speed_enable"), "1");
    EXPECT_EQ(valueIn(profile, "sample_rate"), "48000");
}

}  // namespace
