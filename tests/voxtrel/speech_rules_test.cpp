// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "voxtrel/session/SpeechRules.h"
#include "voxtrel/testing/FakeSettings.h"

namespace {

using namespace voxtrel;
using voxtrel::testing::FakeSettings;

TTS::Capabilities all() {
    return FakeSettings::capabilities();
}

TEST(ALanguage, IsFoundByTagCodeOrLanguageAlone) {
    const struct {
        const char* text;
        EN_VOXTREL_LANGUAGE language;
    } cases[] = {
        {"en-US", LANG_EN_US},      {"en_US", LANG_EN_US},       {"en", LANG_EN_US},
        {"EN", LANG_EN_US},         {"en-GB", LANG_EN_US},       {"fr", LANG_FR_FR},
        {"FR-fr", LANG_FR_FR},      {"fr_FR.UTF-8", LANG_FR_FR}, {"fr-CA", LANG_FR_FR},
        {"es", LANG_ES_ES},         {"es-419", LANG_ES_ES},      {"ko", LANG_KO_KR},
        {"ko-Kore-KR", LANG_KO_KR}, {"pt-BR", LANG_PT_PT},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(each.language, languageOf(each.text)) << each.text;
    }
}

TEST(ALanguage, IsNotFoundByAnythingElse) {
    for (const char* text :
         {"", "-", "f", "fra", "french", "de", "de-DE", "na_NL", "xx-FR", " fr"}) {
        EXPECT_FALSE(languageOf(text)) << text;
    }
}

TEST(ALanguage, HasATag) {
    EXPECT_EQ("en-US", tagOf(LANG_EN_US));
    EXPECT_EQ("pt-PT", tagOf(LANG_PT_PT));
    EXPECT_EQ("", tagOf(LANG_NA));
    EXPECT_EQ("", tagOf(static_cast<EN_VOXTREL_LANGUAGE>(77)));
}

TEST(Defaults, StandInForWhatIsNotSet) {
    SpeechOptions defaults;
    defaults.language = "fr";
    defaults.voice = "fr-FR-2";
    defaults.speed = 100;
    defaults.pitch = 1.5F;
    defaults.volume = 2.5F;
    defaults.speechVolume = 3;
    defaults.mediaVolume = 4;
    defaults.onLoss = OnLoss::SayAgain;
    SpeechOptions own;
    own.speed = 200;
    const SpeechOptions both = merged(own, defaults);
    EXPECT_EQ("fr", both.language);
    EXPECT_EQ("fr-FR-2", both.voice);
    EXPECT_EQ(200U, both.speed);
    EXPECT_EQ(1.5F, both.pitch);
    EXPECT_EQ(2.5F, both.volume);
    EXPECT_EQ(3U, both.speechVolume);
    EXPECT_EQ(4U, both.mediaVolume);
    EXPECT_EQ(OnLoss::SayAgain, both.onLoss);
}

TEST(Defaults, DoNotGiveALanguageTheVoiceOfAnother) {
    SpeechOptions defaults;
    defaults.language = "fr";
    defaults.voice = "2";
    SpeechOptions own;
    own.language = "es";
    EXPECT_FALSE(merged(own, defaults).voice);
    own.language = "fr";
    EXPECT_EQ("2", merged(own, defaults).voice);
    own.language = "es";
    own.voice = "1";
    EXPECT_EQ("1", merged(own, defaults).voice);
}

TEST(Defaults, GiveTheirVoiceToTheSameLanguageWrittenOtherwise) {
    SpeechOptions defaults;
    defaults.language = "fr";
    defaults.voice = "2";
    SpeechOptions own;
    own.language = "fr_FR";
    EXPECT_EQ("2", merged(own, defaults).voice);
}

TEST(Options, AreCheckedBeforeAServiceIsKnown) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinite = std::numeric_limits<float>::infinity();
    const struct {
        SpeechOptions options;
        Status status;
    } cases[] = {
        {{}, Status::Ok},
        {SpeechOptions{"fr"}, Status::Ok},
        {SpeechOptions{"de"}, Status::NotSupported},
        {SpeechOptions{{}, {}, {}, nan}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, infinite}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, {}, nan}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, {}, {}, 100}, Status::Ok},
        {SpeechOptions{{}, {}, {}, {}, {}, 101}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, {}, {}, {}, 101}, Status::BadParameter},
        {SpeechOptions{{}, {}, 0xFFFFFFFF}, Status::Ok},  // the service tells its range
    };
    for (const auto& each : cases) {
        EXPECT_EQ(each.status, checkOptions(each.options)) << &each - cases;
    }
}

TEST(OptionsThatAreNotSet, AreNotSetOnTheWire) {
    const WireSettings wire = *toWire({}, all());
    EXPECT_EQ(65535U, wire.speed);
    EXPECT_EQ(65535.0F, wire.volume);
    EXPECT_EQ(65535U, wire.voice);
    EXPECT_EQ(65535U, wire.mediaVolume);
    EXPECT_EQ(65535U, wire.speechVolume);
    EXPECT_EQ(65535.0F, wire.pitch);
    EXPECT_EQ(LANG_NA, wire.language);
}

TEST(OptionsThatAreSet, GoOnTheWireAsNumbers) {
    const WireSettings wire = *toWire(SpeechOptions{"fr", "2", 250, 1.5F, 0.0F, 30, 0}, all());
    EXPECT_EQ(LANG_FR_FR, wire.language);
    EXPECT_EQ(2U, wire.voice);
    EXPECT_EQ(250U, wire.speed);
    EXPECT_EQ(1.5F, wire.pitch);
    EXPECT_EQ(0.0F, wire.volume);
    EXPECT_EQ(30U, wire.speechVolume);
    EXPECT_EQ(0U, wire.mediaVolume);
}

TEST(AVoice, IsANumberWhereItHasDigitsAlone) {
    EXPECT_EQ(0U, voiceNumberOf("0"));
    EXPECT_EQ(12345U, voiceNumberOf("12345"));
    EXPECT_EQ(4294967295U, voiceNumberOf("4294967295"));
    for (const char* name : {"", " 2", "2 ", "+2", "-2", "2a", "fr-FR-2", "4294967296"}) {
        EXPECT_FALSE(voiceNumberOf(name)) << name;
    }
}

TEST(AVoice, IsChosenByNameWithoutItsLanguage) {
    const WireSettings wire = *toWire(SpeechOptions{{}, "KO-kr-2"}, all());
    EXPECT_EQ(LANG_KO_KR, wire.language);
    EXPECT_EQ(2U, wire.voice);
}

TEST(OptionsThatTheServiceLacks, AreRefusedWithAReason) {
    TTS::Capabilities few = all();
    few.languages[LANG_KO_KR] = false;
    few.pitchSupported = false;
    few.languages.resize(4);
    const struct {
        SpeechOptions options;
        Status status;
    } cases[] = {
        {SpeechOptions{"ko"}, Status::NotSupported},
        {SpeechOptions{"pt"}, Status::NotSupported},
        {SpeechOptions{"fr", "3"}, Status::NotSupported},
        {SpeechOptions{"fr", "es-ES-1"}, Status::NotSupported},
        {SpeechOptions{{}, "nobody"}, Status::NotSupported},
        {SpeechOptions{{}, ""}, Status::NotSupported},
        {SpeechOptions{{}, "1"}, Status::NoLanguage},
        {SpeechOptions{{}, {}, 79}, Status::BadParameter},
        {SpeechOptions{{}, {}, 901}, Status::BadParameter},
        {SpeechOptions{{}, {}, 65535}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, 100}, Status::NotSupported},
        {SpeechOptions{{}, {}, {}, {}, 100.5F}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, {}, -1}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, {}, std::nanf("")}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, {}, {}, 101}, Status::BadParameter},
        {SpeechOptions{{}, {}, {}, {}, {}, {}, 101}, Status::BadParameter},
    };
    for (const auto& each : cases) {
        const auto wire = toWire(each.options, few);
        EXPECT_EQ(each.status, wire.status()) << &each - cases;
        EXPECT_STREQ(describe(each.status), wire.message()) << &each - cases;
    }
}

TEST(Features, AreThoseOfTheService) {
    TTS::Capabilities can = all();
    can.languages[LANG_ES_ES] = false;
    can.volumeSupported = false;
    const Features features = toFeatures(can, can);
    EXPECT_TRUE(features.speed.isSupported);
    EXPECT_EQ(80U, features.speed.least);
    EXPECT_EQ(900U, features.speed.most);
    EXPECT_EQ(400.0F, features.pitch.most);
    EXPECT_FALSE(features.volume.isSupported);
    EXPECT_EQ((std::vector<std::string>{"en-US", "fr-FR", "ko-KR", "pt-PT"}), features.languages);
    ASSERT_EQ(10U, features.voices.size());
    EXPECT_EQ("fr-FR-2", features.voices[3].name);
    EXPECT_EQ("fr-FR", features.voices[3].language);
    EXPECT_EQ(2U, features.voices[3].number);
}

TEST(Features, TakeANameThatFillsItsField) {
    TTS::Capabilities can = all();
    std::fill(std::begin(can.voices[0].name), std::end(can.voices[0].name), 'n');
    EXPECT_EQ(std::string(64, 'n'), toFeatures(can, can).voices[0].name);
}

}  // namespace
