// SPDX-License-Identifier: Apache-2.0
// How the reader takes a file apart.
#include <gtest/gtest.h>

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

TtsSetting read(const std::string& content, TtsSetting into = allChanged()) {
    const TempFolder folder;
    writeFile(folder.path("p.ini"), content);
    EXPECT_TRUE(into.deserialize(folder.path("p.ini").c_str()));
    EXPECT_EQ(content, readFile(folder.path("p.ini")));
    return into;
}

void expectIgnored(const std::string& content) {
    EXPECT_EQ(textOf(allChanged()), textOf(read(content))) << content;
}

TEST(AProfileFile, FillsEveryFieldThatItNames) {
    const TtsSetting setting = read(
        "\nversion=2\nspeed_enable=0\nspeed=310\nvolume_enable=0\nvolume=81\n"
        "media_volume_enable=0\nmedia_volume=42\ntts_volume_enable=0\ntts_volume=93\n"
        "voice_enable=0\nvoice=4\npitch_enable=0\npitch=205\nlang=ko_KR\nverbosity=1\nenable=0\n"
        "sample_rate=16000\nchannels=1\nmixer_path=6\nlong_break_duration=700\n"
        "short_break_duration=150\n\n",
        TtsSetting("other"));
    EXPECT_EQ(textOf(allChanged()), textOf(setting));
}

TEST(AnEmptyFile, LeavesEveryFieldAsItIs) {
    expectIgnored("");
    expectIgnored("\n");
    expectIgnored("\n\n\n");
}

TEST(ALineThatIsNotASetting, IsSkipped) {
    for (const char* line : {"speed",     "speed 5",          "= 5",        "=",
                             "==",        "colour=5",         "Speed=5",    "SPEED=5",
                             "speed =5",  " speed=5",         "\tspeed=5",  "spee=5",
                             "speedy=5",  "speed\r=5",        "speed:5",    "# speed=5",
                             "[speed=5]", "\"speed\"=5",      "Lang=fr_FR", "lang =fr_FR",
                             "_enable=0", "break_duration=5", "mVoice=5"}) {
        expectIgnored(line);
        expectIgnored(std::string(line) + "\n");
    }
}

TEST(ALineThatIsNotASetting, DoesNotEndTheReading) {
    EXPECT_EQ(7U, read("no setting\n\n=\ncolour=1\nmedia_volume=500\nspeed=7\n").mSpeed);
}

TEST(AKeyWithANulByte, IsNotTheKey) {
    expectIgnored(std::string("speed\0=5\n", 9));
    expectIgnored(std::string("\0speed=5\n", 9));
}

TEST(ALine, IsSplitAtItsFirstEqualsSign) {
    EXPECT_EQ("speed=5", read("lang=speed=5\n").mLang);
    EXPECT_EQ(310U, read("lang=speed=5\n").mSpeed);
}

TEST(ALine, EndsAtALineFeedOnly) {
    const TtsSetting setting = read("lang=fr_FR\r\nspeed=7\r\nvoice=1\rpitch=9\n");
    EXPECT_EQ("fr_FR\r", setting.mLang);
    EXPECT_EQ(7U, setting.mSpeed);
    EXPECT_EQ(1U, setting.mVoice);
    EXPECT_EQ(205.0F, setting.mPitch);
}

TEST(TheLastLine, NeedsNoLineFeed) {
    EXPECT_EQ(7U, read("voice=1\nspeed=7").mSpeed);
}

TEST(AKeyThatOccursTwice, TakesTheLastAcceptedValue) {
    EXPECT_EQ(8U, read("speed=7\nspeed=8\n").mSpeed);
    EXPECT_EQ(60U, read("media_volume=50\nmedia_volume=60\nmedia_volume=101\n").mMediaVolume);
    EXPECT_EQ("b", read("lang=a\nlang=b\n").mLang);
}

TEST(AKeyThatIsMissing, KeepsItsFieldAndIsNotReset) {
    TtsSetting expected = allChanged();
    expected.mVoice = 9;
    EXPECT_EQ(textOf(expected), textOf(read("voice=9\n")));
}

TEST(AMissingFile, IsRefusedAndChangesNothing) {
    const TempFolder folder;
    TtsSetting setting = allChanged();
    EXPECT_FALSE(setting.deserialize(folder.path("p.ini").c_str()));
    EXPECT_EQ(textOf(allChanged()), textOf(setting));
    EXPECT_FALSE(std::filesystem::exists(folder.path("p.ini")));
}

}  // namespace
