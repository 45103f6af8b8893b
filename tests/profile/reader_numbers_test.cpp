// SPDX-License-Identifier: Apache-2.0
// What the reader makes of the text behind each key.
#include <gtest/gtest.h>

#include "profile/TtsSetting.h"
#include "tests/profile/SettingText.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::allChanged;
using voxtrel_test::TempFolder;
using voxtrel_test::textOf;
using voxtrel_test::writeFile;

TtsSetting read(const std::string& content, TtsSetting into = allChanged()) {
    const TempFolder folder;
    writeFile(folder.path("p.ini"), content);
    EXPECT_TRUE(into.deserialize(folder.path("p.ini").c_str()));
    return into;
}

struct Key {
    const char* name;
    void (*expect)(TtsSetting& setting, int32_t value);
};

constexpr Key kSwitches[] = {
    {"speed_enable", [](TtsSetting& s, int32_t v) { s.mSpeedEnable = v; }},
    {"volume_enable", [](TtsSetting& s, int32_t v) { s.mVolumeEnable = v; }},
    {"media_volume_enable", [](TtsSetting& s, int32_t v) { s.mMediaVolumeEnable = v; }},
    {"tts_volume_enable", [](TtsSetting& s, int32_t v) { s.mTtsVolumeEnable = v; }},
    {"voice_enable", [](TtsSetting& s, int32_t v) { s.mVoiceEnable = v; }},
    {"pitch_enable", [](TtsSetting& s, int32_t v) { s.mPitchEnable = v; }},
    {"verbosity", [](TtsSetting& s, int32_t v) { s.mVerbosity = v; }},
    {"enable", [](TtsSetting& s, int32_t v) { s.mEnable = v; }},
};

constexpr Key kVolumes[] = {
    {"media_volume", [](TtsSetting& s, int32_t v) { s.mMediaVolume = static_cast<uint32_t>(v); }},
    {"tts_volume", [](TtsSetting& s, int32_t v) { s.mTtsVolume = static_cast<uint32_t>(v); }},
};

constexpr Key kUnbounded[] = {
    {"speed", [](TtsSetting& s, int32_t v) { s.mSpeed = static_cast<uint32_t>(v); }},
    {"volume", [](TtsSetting& s, int32_t v) { s.mVolume = static_cast<float>(v); }},
    {"voice", [](TtsSetting& s, int32_t v) { s.mVoice = static_cast<uint32_t>(v); }},
    {"pitch", [](TtsSetting& s, int32_t v) { s.mPitch = static_cast<float>(v); }},
    {"sample_rate", [](TtsSetting& s, int32_t v) { s.mSampleRate = v; }},
    {"channels", [](TtsSetting& s, int32_t v) { s.mChannels = v; }},
    {"mixer_path", [](TtsSetting& s, int32_t v) { s.mMixerPath = v; }},
    {"long_break_duration", [](TtsSetting& s, int32_t v) { s.mLongBreakDuration = v; }},
    {"short_break_duration", [](TtsSetting& s, int32_t v) { s.mShortBreakDuration = v; }},
};

void expectStored(const Key& key, const std::string& value, int32_t number,
                  const TtsSetting& before) {
    TtsSetting expected = before;
    key.expect(expected, number);
    const std::string line = std::string(key.name) + "=" + value;
    EXPECT_EQ(textOf(expected), textOf(read(line + "\n", before))) << line;
}

void expectRejected(const Key& key, const std::string& value, const TtsSetting& before) {
    const std::string line = std::string(key.name) + "=" + value;
    EXPECT_EQ(textOf(before), textOf(read(line + "\n", before))) << line;
}

TEST(ASwitchInAProfile, TakesZeroAndOne) {
    for (const Key& key : kSwitches) {
        for (const TtsSetting& before : {TtsSetting("x"), allChanged()}) {
            expectStored(key, "0", 0, before);
            expectStored(key, "1", 1, before);
            expectStored(key, " 1", 1, before);
            expectStored(key, "", 0, before);
        }
    }
}

TEST(ASwitchInAProfile, IgnoresEverythingElse) {
    for (const Key& key : kSwitches) {
        for (const TtsSetting& before : {TtsSetting("x"), allChanged()}) {
            for (const char* value : {"2", "-1", "10", "2147483647", "-2147483648", "4294967296",
                                      "4294967297", "99999999999999999999"}) {
                expectRejected(key, value, before);
            }
        }
    }
}

TEST(AVolumeInAProfile, TakesZeroToAHundred) {
    for (const Key& key : kVolumes) {
        for (int32_t value : {0, 1, 50, 99, 100}) {
            expectStored(key, std::to_string(value), value, TtsSetting("x"));
        }
    }
}

TEST(AVolumeInAProfile, IgnoresWhatIsOutside) {
    for (const Key& key : kVolumes) {
        for (const char* value :
             {"101", "-1", "65535", "2147483648", "-2147483649", "4294967296", "4294967346"}) {
            expectRejected(key, value, allChanged());
        }
    }
}

TEST(AnUnboundedNumberInAProfile, TakesAnyThirtyTwoBits) {
    for (const Key& key : kUnbounded) {
        for (int32_t value : {0, 1, 65535, 2147483647, -1, -2147483647 - 1}) {
            expectStored(key, std::to_string(value), value, TtsSetting("x"));
        }
    }
}

TEST(ANumberInAProfile, SaturatesAtThirtyTwoBitsOnEveryMachine) {
    for (const Key& key : kUnbounded) {
        for (const char* value : {"2147483648", "4294967295", "4294967296", "9223372036854775807",
                                  "99999999999999999999999"}) {
            expectStored(key, value, 2147483647, TtsSetting("x"));
        }
        for (const char* value : {"-2147483649", "-4294967297", "-99999999999999999999999"}) {
            expectStored(key, value, -2147483647 - 1, TtsSetting("x"));
        }
    }
}

TEST(ANumberInAProfile, IsDecimalAndEndsAtTheFirstOtherCharacter) {
    const std::pair<const char*, int32_t> cases[] = {
        {"3.7", 3}, {"12abc", 12}, {"  42", 42}, {"\t\v\f\r 42", 42}, {"+5", 5},
        {"-5", -5}, {"0x10", 0},   {"010", 10},  {"1e3", 1},          {"", 0},
        {"abc", 0}, {"- 5", 0},    {"--5", 0},   {"=5", 0},           {"7=8", 7},
        {"9\r", 9}, {"6 5", 6},    {"1,5", 1},
    };
    for (const Key& key : kUnbounded) {
        for (const auto& [text, number] : cases) {
            expectStored(key, text, number, allChanged());
        }
    }
}

TEST(ANumberInAProfile, EndsAtANulByte) {
    expectStored(kUnbounded[0], std::string("12\0003", 4), 12, TtsSetting("x"));
}

TEST(AFractionInAProfile, IsCutWhenReadAlthoughItIsWritten) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    TtsSetting setting("x");
    setting.mVolume = 3.75F;
    setting.mPitch = 1.5F;
    ASSERT_TRUE(setting.serialize(path.c_str()));
    ASSERT_TRUE(setting.deserialize(path.c_str()));
    EXPECT_EQ(3.0F, setting.mVolume);
    EXPECT_EQ(1.0F, setting.mPitch);
}

TEST(ALanguageInAProfile, IsTheRestOfTheLine) {
    for (const std::string& text : {std::string("fr_FR"), std::string(""), std::string(" fr_FR "),
                                    std::string("fr_FR\r"), std::string("a=b=c"), std::string("xx"),
                                    std::string("a\0b", 3), std::string("\xff\x80")}) {
        TtsSetting expected = allChanged();
        expected.mLang = text;
        EXPECT_EQ(textOf(expected), textOf(read("lang=" + text + "\n")));
    }
}

TEST(AVersionInAProfile, IsNotStored) {
    for (const char* value : {"1", "2", "3", "-1"}) {
        EXPECT_EQ(textOf(allChanged()), textOf(read(std::string("version=") + value + "\n")));
    }
}

}  // namespace
