// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>
#include <regex>
#include <sstream>

#include "profile/TtsSetting.h"
#include "tests/profile/SettingText.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::allChanged;
using voxtrel_test::readFile;
using voxtrel_test::TempFolder;
using voxtrel_test::textOf;
using voxtrel_test::writeFile;

std::string written(const TtsSetting& setting) {
    const TempFolder folder;
    EXPECT_TRUE(setting.serialize(folder.path("p.ini").c_str()));
    return readFile(folder.path("p.ini"));
}

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(AWrittenProfile, HoldsAFreshSettingByteByByte) {
    EXPECT_EQ(
        "\nversion=2\nspeed_enable=1\nspeed=65535\nvolume_enable=1\nvolume=65535\n"
        "media_volume_enable=1\nmedia_volume=65535\ntts_volume_enable=1\ntts_volume=65535\n"
        "voice_enable=1\nvoice=65535\npitch_enable=1\npitch=65535\nlang=na_NL\nverbosity=0\n"
        "enable=1\n\n",
        written(TtsSetting("x")));
}

// Every value differs from every other, so that no two of them can be swapped unseen.
TEST(AWrittenProfile, HoldsEachFieldUnderItsOwnKey) {
    TtsSetting s = allChanged();
    s.mVersion = -7;
    EXPECT_EQ(
        "\nversion=-7\nspeed_enable=0\nspeed=310\nvolume_enable=0\nvolume=81\n"
        "media_volume_enable=0\nmedia_volume=42\ntts_volume_enable=0\ntts_volume=93\n"
        "voice_enable=0\nvoice=4\npitch_enable=0\npitch=205\nlang=ko_KR\nverbosity=1\n"
        "enable=0\n\n",
        written(s));
}

struct Switch {
    const char* key;
    int32_t TtsSetting::*field;
};

constexpr Switch kSwitches[] = {
    {"speed_enable", &TtsSetting::mSpeedEnable},
    {"volume_enable", &TtsSetting::mVolumeEnable},
    {"media_volume_enable", &TtsSetting::mMediaVolumeEnable},
    {"tts_volume_enable", &TtsSetting::mTtsVolumeEnable},
    {"voice_enable", &TtsSetting::mVoiceEnable},
    {"pitch_enable", &TtsSetting::mPitchEnable},
    {"verbosity", &TtsSetting::mVerbosity},
    {"enable", &TtsSetting::mEnable},
};

TEST(AWrittenProfile, LeavesOutASwitchThatIsNeitherZeroNorOne) {
    for (const Switch& row : kSwitches) {
        for (int32_t value :
             {2, -1, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()}) {
            TtsSetting setting("x");
            const std::string whole = written(setting);
            const std::string line =
                "\n" + std::string(row.key) + "=" + std::to_string(setting.*row.field);
            std::string expected = whole;
            expected.erase(whole.find(line + "\n"), line.size());
            setting.*row.field = value;
            EXPECT_EQ(expected, written(setting)) << row.key << ' ' << value;
        }
    }
}

TEST(AWrittenProfile, HoldsASwitchThatIsZeroOrOne) {
    for (const Switch& row : kSwitches) {
        for (int32_t value : {0, 1}) {
            TtsSetting setting("x");
            setting.*row.field = value;
            const std::string line =
                "\n" + std::string(row.key) + "=" + std::to_string(value) + "\n";
            EXPECT_TRUE(has(written(setting), line)) << line;
        }
    }
}

TEST(AWrittenProfile, HoldsFloatsAsAStreamWritesThem) {
    const std::pair<float, std::string> cases[] = {
        {65535.0F, "65535"},   {1.5F, "1.5"},         {1234567.0F, "1.23457e+06"}, {0.1F, "0.1"},
        {-2.25F, "-2.25"},     {100.0F, "100"},       {1.0e-5F, "1e-05"},          {0.0F, "0"},
        {123456.0F, "123456"}, {33.3333F, "33.3333"},
    };
    for (const auto& [value, text] : cases) {
        TtsSetting setting("x");
        setting.mVolume = value;
        EXPECT_TRUE(has(written(setting), "\nvolume=" + text + "\n")) << text;
        setting = TtsSetting("x");
        setting.mPitch = value;
        EXPECT_TRUE(has(written(setting), "\npitch=" + text + "\n")) << text;
    }
}

TEST(AWrittenProfile, HoldsTheNumericSettingsUnsigned) {
    TtsSetting s("x");
    s.mSpeed = 4294967295U;
    s.mMediaVolume = 4294967294U;
    s.mTtsVolume = 4294967293U;
    s.mVoice = 4294967292U;
    const std::string text = written(s);
    EXPECT_TRUE(has(text, "\nspeed=4294967295\n"));
    EXPECT_TRUE(has(text, "\nmedia_volume=4294967294\n"));
    EXPECT_TRUE(has(text, "\ntts_volume=4294967293\n"));
    EXPECT_TRUE(has(text, "\nvoice=4294967292\n"));
}

TEST(AWrittenProfile, HoldsTheLanguageVerbatim) {
    TtsSetting s("x");
    s.mLang = std::string(" a=b \r\0z", 8);
    EXPECT_TRUE(has(written(s), "\nlang=" + s.mLang + "\nverbosity=0\n"));
}

TEST(AWrittenProfile, NeverHoldsWhatIsOnlyRead) {
    const std::string text = written(allChanged());
    for (const char* key : {"sample_rate", "channels", "mixer_path", "break_duration"}) {
        EXPECT_FALSE(has(text, key)) << key;
    }
}

/// The bytes of the guide's dump: rows of an offset, two blanks, and bytes in hexadecimal.
std::string dumpInTheGuide() {
    std::istringstream guide(readFile(VOXTREL_SOURCE_DIR "/docs/profile-format.md"));
    const std::regex row("([0-9a-f]{4})  ((?:[0-9a-f]{2} )+) .*");
    std::string bytes;
    std::smatch match;
    for (std::string line; std::getline(guide, line);) {
        if (std::regex_match(line, match, row)) {
            EXPECT_EQ(bytes.size(), std::stoul(match[1], nullptr, 16)) << line;
            std::istringstream hex(match[2]);
            for (std::string byte; hex >> byte;) {
                bytes.push_back(static_cast<char>(std::stoul(byte, nullptr, 16)));
            }
        }
    }
    return bytes;
}

TEST(AWrittenProfile, IsTheOneThatTheGuideShows) {
    TtsSetting s("x");
    s.mSpeed = 300;
    s.mVolume = 1.5F;
    s.mMediaVolume = 50;
    s.mMediaVolumeEnable = 0;
    s.mTtsVolume = 100;
    s.mVoice = 0;
    s.mPitch = 200;
    s.mLang = "en_US";
    EXPECT_EQ(217U, dumpInTheGuide().size());
    EXPECT_EQ(dumpInTheGuide(), written(s));
}

TEST(WritingAProfile, ReplacesALongerFile) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    writeFile(path, std::string(5000, 'x'));
    ASSERT_TRUE(TtsSetting("x").serialize(path.c_str()));
    EXPECT_EQ(written(TtsSetting("x")), readFile(path));
}

TEST(WritingAProfile, ChangesNoField) {
    const TtsSetting setting = allChanged();
    (void)written(setting);
    EXPECT_EQ(textOf(allChanged()), textOf(setting));
}

TEST(WritingAProfile, IntoAMissingFolderIsRefused) {
    const TempFolder folder;
    EXPECT_FALSE(TtsSetting("x").serialize(folder.path("no/p.ini").c_str()));
    EXPECT_FALSE(std::filesystem::exists(folder.path("no")));
}

TEST(WritingAProfile, OntoAFolderIsRefused) {
    const TempFolder folder;
    EXPECT_FALSE(TtsSetting("x").serialize(folder.path("").c_str()));
}

}  // namespace
