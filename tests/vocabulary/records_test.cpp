// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "vocabulary/Capabilities.h"
#include "vocabulary/GlobalConfig.h"

namespace {

TEST(VoiceInfo, HasTheLayoutThatCrossesTheWire) {
    TTS::VoiceInfo voice{};
    voice.langId = LANG_PT_PT;
    voice.id = 0x01020304U;
    std::strcpy(voice.name, "Ana");
    unsigned char image[72] = {};
    ASSERT_EQ(sizeof image, sizeof voice);
    std::memcpy(image, &voice, sizeof image);
    const unsigned char expected[] = {4, 0, 0, 0, 4, 3, 2, 1, 'A', 'n', 'a', 0};
    EXPECT_EQ(0, std::memcmp(image, expected, sizeof expected));
    EXPECT_EQ(64U, sizeof voice.name);
}

TEST(Capabilities, StartZeroFalseAndEmpty) {
    const TTS::Capabilities caps;
    EXPECT_FALSE(caps.ready || caps.permitted);
    EXPECT_FALSE(caps.pitchSupported || caps.volumeSupported || caps.speedSupported);
    EXPECT_EQ(0.0F, caps.pitchMin);
    EXPECT_EQ(0.0F, caps.pitchMax);
    EXPECT_EQ(0.0F, caps.volumeMin);
    EXPECT_EQ(0.0F, caps.volumeMax);
    EXPECT_EQ(0U, caps.speedMin);
    EXPECT_EQ(0U, caps.speedMax);
    EXPECT_TRUE(caps.languages.empty() && caps.voicesNum.empty() && caps.voices.empty());
}

TEST(Capabilities, DeclareTheirFieldsInRecordOrder) {
    const TTS::Capabilities c;
    const void* fields[] = {&c.ready,           &c.pitchSupported, &c.pitchMin,  &c.pitchMax,
                            &c.volumeSupported, &c.volumeMin,      &c.volumeMax, &c.speedSupported,
                            &c.speedMin,        &c.speedMax,       &c.languages, &c.voicesNum,
                            &c.voices,          &c.permitted};
    for (size_t i = 1; i < std::size(fields); ++i) {
        EXPECT_LT(fields[i - 1], fields[i]) << "field " << i;
    }
}

TEST(Capabilities, CarryTheirRangesInFixedWidths) {
    static_assert(std::is_same<decltype(TTS::Capabilities::speedMin), uint32_t>::value, "");
    static_assert(std::is_same<decltype(TTS::Capabilities::voicesNum)::value_type, int32_t>::value,
                  "");
    static_assert(sizeof(TTS::Capabilities::pitchMin) == 4, "");
}

TEST(GlobalConfigKey, HasTheFixedValue) {
    static_assert(std::is_same<std::underlying_type_t<VOXTRELAPI_GCONF>, int32_t>::value, "");
    EXPECT_EQ(2, GCONF_SPEED);
    EXPECT_EQ(4, GCONF_PITCH);
    EXPECT_EQ(6, GCONF_VOICE);
    EXPECT_EQ(8, GCONF_VOLUME);
    EXPECT_EQ(10, GCONF_BG_VOLUME);
    EXPECT_EQ(12, GCONF_TTS_VOLUME);
    EXPECT_EQ(14, GCONF_LANGUAGE);
}

TEST(GlobalConfigKey, HasItsEnableFlagRightBehindIt) {
    EXPECT_EQ(GCONF_SPEED + 1, GCONF_SPEED_ENABLE);
    EXPECT_EQ(GCONF_PITCH + 1, GCONF_PITCH_ENABLE);
    EXPECT_EQ(GCONF_VOICE + 1, GCONF_VOICE_ENABLE);
    EXPECT_EQ(GCONF_VOLUME + 1, GCONF_VOLUME_ENABLE);
    EXPECT_EQ(GCONF_BG_VOLUME + 1, GCONF_BG_VOLUME_ENABLE);
    EXPECT_EQ(GCONF_TTS_VOLUME + 1, GCONF_TTS_VOLUME_ENABLE);
}

}  // namespace
