// SPDX-License-Identifier: Apache-2.0
// The service's default profile gets real values the first time this format version meets it.
#include <gtest/gtest.h>

#include "profile/TtsSetting.h"
#include "tests/profile/SettingText.h"
#include "tests/profile/SystemCalls.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::allChanged;
using voxtrel_test::readFile;
using voxtrel_test::SystemCalls;
using voxtrel_test::TempFolder;
using voxtrel_test::textOf;
using voxtrel_test::writeFile;

constexpr const char* kUnset =
    "speed=65535\nvolume=65535\nmedia_volume=65535\ntts_volume=65535\nvoice=65535\npitch=65535\n"
    "lang=na_NL\n";

constexpr const char* kUpgraded =
    "\nversion=2\nspeed_enable=1\nspeed=300\nvolume_enable=1\nvolume=100\nmedia_volume_enable=1\n"
    "media_volume=50\ntts_volume_enable=1\ntts_volume=100\nvoice_enable=1\nvoice=0\n"
    "pitch_enable=1\npitch=200\nlang=en_US\nverbosity=0\nenable=1\n\n";

class ADefaultProfile : public ::testing::Test {
protected:
    TtsSetting read(const std::string& content, TtsSetting into = TtsSetting("x")) {
        writeFile(path, content);
        EXPECT_TRUE(into.deserialize(path.c_str()));
        return into;
    }

    TempFolder folder;
    std::string path = folder.path("voxtrel.ini");
};

TEST_F(ADefaultProfile, WithoutAVersionGetsRealValuesAndIsWrittenBack) {
    const TtsSetting setting = read(kUnset);
    EXPECT_EQ("x|300|100|50|100|0|200|en_US|0|1|1|1|1|1|1|1|48000|2|1|2|0|0", textOf(setting));
    EXPECT_EQ(kUpgraded, readFile(path));
}

TEST_F(ADefaultProfile, WithAnotherVersionIsUpgradedToo) {
    for (const char* version : {"1", "3", "0", "-2", "", "x2", "20", "4294967298"}) {
        EXPECT_EQ(300U, read("version=" + std::string(version) + "\n" + kUnset).mSpeed) << version;
        EXPECT_EQ(kUpgraded, readFile(path)) << version;
    }
}

TEST_F(ADefaultProfile, WithTheCurrentVersionAnywhereIsLeftAlone) {
    for (const std::string& content :
         {std::string("version=2\n") + kUnset, std::string(kUnset) + "version=2\n",
          "version=2\nversion=1\n" + std::string(kUnset),
          "version=1\nversion=2\n" + std::string(kUnset),
          "version= +2.9\r\n" + std::string(kUnset)}) {
        EXPECT_EQ(65535U, read(content).mSpeed) << content;
        EXPECT_EQ(content, readFile(path));
    }
}

TEST_F(ADefaultProfile, IsComparedWithTheVersionThatTheSettingHolds) {
    TtsSetting setting("x");
    setting.mVersion = 3;
    EXPECT_EQ(300U, read(std::string("version=2\n") + kUnset, setting).mSpeed);
    EXPECT_EQ(65535U, read(std::string("version=3\n") + kUnset, setting).mSpeed);
}

TEST_F(ADefaultProfile, KeepsWhatWasSet) {
    const std::string before = textOf(allChanged());
    EXPECT_EQ(before, textOf(read("", allChanged())));
    EXPECT_EQ(
        "\nversion=2\nspeed_enable=0\nspeed=310\nvolume_enable=0\nvolume=81\n"
        "media_volume_enable=0\nmedia_volume=42\ntts_volume_enable=0\ntts_volume=93\n"
        "voice_enable=0\nvoice=4\npitch_enable=0\npitch=205\nlang=ko_KR\nverbosity=1\n"
        "enable=0\n\n",
        readFile(path));
}

TEST_F(ADefaultProfile, ReplacesEachUnsetValueByItself) {
    const std::pair<const char*, const char*> cases[] = {
        {"speed=65535\n", "other|300|81|42|93|4|205|ko_KR"},
        {"volume=65535\n", "other|310|100|42|93|4|205|ko_KR"},
        {"voice=65535\n", "other|310|81|42|93|0|205|ko_KR"},
        {"pitch=65535\n", "other|310|81|42|93|4|200|ko_KR"},
        {"lang=na_NL\n", "other|310|81|42|93|4|205|en_US"},
    };
    for (const auto& [content, expected] : cases) {
        EXPECT_EQ(0U, textOf(read(content, allChanged())).find(expected)) << content;
    }
    TtsSetting setting = allChanged();
    setting.mMediaVolume = 65535;
    EXPECT_EQ(50U, read("", setting).mMediaVolume);
    setting = allChanged();
    setting.mTtsVolume = 65535;
    EXPECT_EQ(100U, read("", setting).mTtsVolume);
}

TEST_F(ADefaultProfile, ReplacesOnlyTheExactUnsetValue) {
    for (const char* value : {"65534", "65536", "0", "-1"}) {
        const std::string number = value;
        const TtsSetting setting = read("speed=" + number + "\nvolume=" + number +
                                            "\npitch=" + number + "\nvoice=" + number + "\n",
                                        allChanged());
        EXPECT_EQ(static_cast<uint32_t>(std::stol(number)), setting.mSpeed);
        EXPECT_EQ(std::stof(number), setting.mVolume);
        EXPECT_EQ(std::stof(number), setting.mPitch);
        EXPECT_EQ(static_cast<uint32_t>(std::stol(number)), setting.mVoice);
    }
}

TEST_F(ADefaultProfile, GetsEnglishForEveryLanguageThatIsUnknown) {
    for (const char* lang : {"na_NL", "", "de_DE", "en_us", "fr_FR\r", "fr_FR "}) {
        EXPECT_EQ("en_US", read("lang=" + std::string(lang) + "\n").mLang) << lang;
    }
    for (const char* lang : {"en_US", "fr_FR", "es_ES", "ko_KR", "pt_PT"}) {
        EXPECT_EQ(lang, read("lang=" + std::string(lang) + "\n").mLang);
    }
}

TEST_F(ADefaultProfile, IsReadBackWithoutASecondUpgrade) {
    const TtsSetting upgraded = read(kUnset);
    const SystemCalls calls(path);
    TtsSetting again("x");
    ASSERT_TRUE(again.deserialize(path.c_str()));
    EXPECT_EQ(textOf(upgraded), textOf(again));
    EXPECT_TRUE(calls.writes.empty());
}

TEST_F(ADefaultProfile, IsSyncedWhenItIsWrittenBack) {
    const SystemCalls calls(path);
    (void)read(kUnset);
    ASSERT_EQ(1U, calls.commands.size());
    EXPECT_EQ("/bin/sync", calls.commands[0].text);
    EXPECT_EQ(kUpgraded, calls.commands[0].content);
}

TEST_F(ADefaultProfile, IsNoLongerOpenForReadingWhenItIsWrittenBack) {
    const SystemCalls calls(path);
    (void)read(kUnset);
    ASSERT_EQ(1U, calls.commands.size());
    EXPECT_EQ(1U, calls.commands[0].openFlags.size());
}

TEST_F(ADefaultProfile, IsUpgradedWhateverElseItHolds) {
    for (const char* line :
         {"", "version", "version 2", "2", "=2", "lang=2", "Version=2", "speed=2"}) {
        EXPECT_EQ("en_US", read("\n" + std::string(line) + "\n\nlang=na_NL\n").mLang) << line;
        EXPECT_NE(std::string::npos, readFile(path).find("\nversion=2\n")) << line;
    }
}

// The folder's name counts like the file's: what is searched is the whole path.
TEST_F(ADefaultProfile, IsAnyPathThatContainsItsName) {
    std::filesystem::create_directory(folder.path("my-voxtrel.ini.d"));
    for (const char* name : {"myvoxtrel.ini", "voxtrel.ini.bak", "my-voxtrel.ini.d/app.conf"}) {
        path = folder.path(name);
        EXPECT_EQ(300U, read(kUnset).mSpeed) << name;
        EXPECT_EQ(kUpgraded, readFile(path)) << name;
    }
}

TEST_F(ADefaultProfile, ThatCannotBeWrittenBackIsReadAllTheSame) {
    const std::string directory = folder.path("dir-voxtrel.ini");
    std::filesystem::create_directory(directory);
    TtsSetting setting("x");
    EXPECT_TRUE(setting.deserialize(directory.c_str()));
    EXPECT_EQ(300U, setting.mSpeed);
}

TEST_F(ADefaultProfile, ThatIsMissingIsNeitherUpgradedNorWritten) {
    TtsSetting setting("x");
    EXPECT_FALSE(setting.deserialize(path.c_str()));
    EXPECT_EQ(textOf(TtsSetting("x")), textOf(setting));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ADefaultProfile, IsNoOtherProfile) {
    for (const char* name : {"app.ini", "Voxtrel.ini", "voxtrel.in", "voxtrel", "voxtrel_ini"}) {
        path = folder.path(name);
        EXPECT_EQ(textOf(TtsSetting("x")), textOf(read(kUnset))) << name;
        EXPECT_EQ(kUnset, readFile(path)) << name;
    }
}

}  // namespace
