// SPDX-License-Identifier: Apache-2.0
#include "tools/Settings.h"

#include <gtest/gtest.h>

#include <set>

#include "tools/Errors.h"

using namespace voxtrelctl;

namespace {

const Setting& named(const char* name) {
    return settingNamed(name);
}

TEST(EverySetting, HasANameOfItsOwn) {
    std::set<std::string> names;
    for (const Setting& setting : settings()) {
        EXPECT_TRUE(names.insert(setting.name).second) << setting.name;
    }
    EXPECT_EQ(names.size(), 9U);
}

TEST(TheSettingsWithASwitch, AreSix) {
    EXPECT_EQ(settingNames(&hasSwitch), "speed, pitch, voice, volume, bg-volume, tts-volume");
}

TEST(AnUnknownName, IsRefusedWithTheNamesThereAre) {
    EXPECT_EQ(findSetting("loudness"), nullptr);
    try {
        (void)settingNamed("loudness");
        FAIL() << "found";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), -3);
        EXPECT_NE(std::string(failure.what()).find("tts-volume"), std::string::npos);
    }
}

TEST(AWholeNumber, IsReadWhole) {
    EXPECT_EQ(parseValue(named("speed"), "4294967295"), Value(uint32_t{4294967295U}));
    EXPECT_EQ(parseValue(named("speed"), "0"), Value(uint32_t{0}));
}

TEST(WhatIsNoWholeNumber, IsRefused) {
    for (const char* text : {"", "12x", "-1", "1.5", "4294967296", " 1", "fast"}) {
        EXPECT_THROW(parseValue(named("speed"), text), Failure) << text;
    }
}

TEST(ARealNumber, IsReadWithItsFraction) {
    EXPECT_EQ(parseValue(named("pitch"), "1.5"), Value(1.5F));
    EXPECT_EQ(parseValue(named("pitch"), "-2"), Value(-2.0F));
}

TEST(WhatIsNoRealNumber, IsRefused) {
    for (const char* text : {"", "high", "1.5x", "nan", "NaN"}) {
        EXPECT_THROW(parseValue(named("volume"), text), Failure) << text;
    }
}

TEST(ALanguage, IsTakenAsWritten) {
    EXPECT_EQ(parseValue(named("language"), "xx"), Value(std::string("xx")));
}

TEST(AValue, IsShownWithoutTrailingZeros) {
    EXPECT_EQ(valueText(uint32_t{300}), "300");
    EXPECT_EQ(valueText(int32_t{-1}), "-1");
    EXPECT_EQ(valueText(200.0F), "200");
    EXPECT_EQ(valueText(1.5F), "1.5");
    EXPECT_EQ(valueText(std::string("en_US")), "en_US");
}

TEST(ASwitch, IsThatOfSpeechOrOfASetting) {
    EXPECT_EQ(switchNamed("speech"), voxtrel::Switch::Speech);
    EXPECT_EQ(switchNamed("bg-volume"), voxtrel::Switch::MediaVolume);
    EXPECT_THROW(switchNamed("language"), Failure);
    EXPECT_THROW(switchNamed("loudness"), Failure);
}

TEST(EverySetting, IsFoundAgainAmongAll) {
    for (const Setting& setting : settings()) {
        EXPECT_EQ(valueOf({}, setting), Value(std::string())) << setting.name;
        const bool isLanguage = std::string(setting.name) == "language";
        const Value value = parseValue(setting, isLanguage ? "fr_FR" : "1");
        EXPECT_EQ(valueOf(only(setting, value), setting), value) << setting.name;
    }
}

TEST(ALanguage, IsShownByItsCode) {
    voxtrel::GlobalSettings all;
    all.language = "fr-FR";
    EXPECT_EQ(valueOf(all, named("language")), Value(std::string("fr_FR")));
}

voxtrel::Features features() {
    voxtrel::Features can;
    can.speed = {true, 80, 450};
    can.pitch = {true, 0.0F, 400.0F};
    can.volume = {true, 0.5F, 100.0F};
    return can;
}

TEST(ARange, IsToldFromTheFeatures) {
    const voxtrel::Features can = features();
    EXPECT_EQ(rangeText(named("speed"), can), "80 to 450");
    EXPECT_EQ(rangeText(named("rate"), can), "80 to 450");
    EXPECT_EQ(rangeText(named("pitch"), can), "0 to 400");
    EXPECT_EQ(rangeText(named("volume"), can), "0.5 to 100");
    EXPECT_EQ(rangeText(named("bg-volume"), can), "0 to 100");
    EXPECT_EQ(rangeText(named("verbosity"), can), "0 to 1");
    EXPECT_EQ(rangeText(named("language"), can), "");
    EXPECT_EQ(acceptedText(named("speed"), can), " (it takes 80 to 450)");
    EXPECT_EQ(acceptedText(named("language"), can), "");
    EXPECT_EQ(rangeText(named("speed"), {}), "");
    EXPECT_EQ(acceptedText(named("pitch"), {}), " (the service does not support it)");
}

TEST(ANumber, IsAcceptedWithinItsRange) {
    const voxtrel::Features can = features();
    EXPECT_TRUE(isAccepted(named("speed"), std::uint32_t{80}, can));
    EXPECT_FALSE(isAccepted(named("speed"), std::uint32_t{79}, can));
    EXPECT_FALSE(isAccepted(named("speed"), std::uint32_t{65535}, can));
    EXPECT_FALSE(isAccepted(named("rate"), std::uint32_t{451}, can));
    EXPECT_FALSE(isAccepted(named("volume"), 0.25F, can));
    EXPECT_FALSE(isAccepted(named("verbosity"), std::int32_t{2}, can));
    EXPECT_TRUE(isAccepted(named("voice"), std::uint32_t{65535}, can)) << "the service knows";
    EXPECT_FALSE(isAccepted(named("pitch"), 100.0F, {})) << "it does not support it";
}

}  // namespace
