// SPDX-License-Identifier: Apache-2.0
#include <ttscommon/ttscommon.h>

#include <algorithm>
#include <limits>
#include <ostream>
#include <stdexcept>

#include "tests/client/ClientTest.h"

namespace {

using platform::logged;
using support::keyLine;
using support::keyOf;
using support::Lines;
using support::notSupportedLine;
using support::takeNotes;

/// One key with a number and a range; the rows give values as doubles.
struct NumberKey {
    const char* name;
    int32_t key;
    bool isFloat;
    const char* rejectedBy;  ///< the operation that the rejection names
    double low;
    double high;
    bool TTS::Capabilities::*capability;  ///< null when the feature has none
};

void PrintTo(const NumberKey& key, std::ostream* out) {
    *out << key.name;
}

class AGlobalNumber : public support::JoinedClientTest,
                      public testing::WithParamInterface<NumberKey> {
protected:
    int set(double value) {
        if (GetParam().isFloat) {
            auto number = static_cast<float>(value);
            return client.setGlobalConfig(keyOf(GetParam().key), &number);
        }
        auto number = static_cast<uint32_t>(value);
        return client.setGlobalConfig(keyOf(GetParam().key), &number);
    }

    std::string shown(double value) const {
        return GetParam().isFloat
                   ? std::to_string(value)
                   : std::to_string(static_cast<int32_t>(static_cast<uint32_t>(value)));
    }

    std::string traceLine() const { return keyLine("setGlobalConfig", GetParam().key); }

    std::string rejectionLine(double value) const {
        const std::string name = GetParam().rejectedBy;
        return logged(1, name + (GetParam().isFloat ? ": %f" : ": %d") + ", bad parameter\n",
                      name + ": " + shown(value) + ", bad parameter\n");
    }

    /// Everything up to the question for the flag, and then `end`.
    Lines checked(const Lines& end) const {
        const std::string flagKey = std::to_string(GetParam().key + 1);
        Lines lines{traceLine(), keyLine("enabled2", GetParam().key + 1),
                    "ask enabled2(pid, " + flagKey + ")"};
        lines.insert(lines.end(), end.begin(), end.end());
        return lines;
    }

    std::string request(double value) const {
        return "ask setGlobalConfig(pid, " + std::to_string(GetParam().key) + ", " + shown(value) +
               ")";
    }
};

TEST_P(AGlobalNumber, IsForwardedAtBothEndsOfItsRange) {
    service.status[support::kSetGlobalConfig] = -31;
    for (const double value : {GetParam().low, GetParam().high}) {
        EXPECT_EQ(-31, set(value));
        EXPECT_EQ(checked({"ask locked()", request(value)}), takeNotes());
    }
}

TEST_P(AGlobalNumber, ReturnsMinusThreeOutsideItsRangeAndAsksNobody) {
    const double step = GetParam().isFloat ? 0.5 : 1.0;
    std::vector<double> outside{GetParam().high + step, 65535.0};
    if (GetParam().low > 0 || GetParam().isFloat) {
        outside.push_back(GetParam().low - step);
    }
    for (const double value : outside) {
        EXPECT_EQ(-3, set(value));
        EXPECT_EQ(Lines({traceLine(), rejectionLine(value)}), takeNotes());
    }
}

TEST_P(AGlobalNumber, IsComparedUnsignedWhenItIsWhole) {
    if (!GetParam().isFloat) {
        EXPECT_EQ(-3, set(4294967295.0));
        EXPECT_EQ(Lines({traceLine(), rejectionLine(4294967295.0)}), takeNotes());
    }
}

TEST_P(AGlobalNumber, PassesTheRangeAsNotANumber) {
    if (!GetParam().isFloat) {
        return;
    }
    EXPECT_EQ(0, set(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(checked({"ask locked()", request(std::numeric_limits<double>::quiet_NaN())}),
              takeNotes());
}

TEST_P(AGlobalNumber, ReturnsTheFailureOfTheFlagQuestion) {
    service.status[support::kEnabled2] = -4;
    EXPECT_EQ(-4, set(GetParam().high));
    EXPECT_EQ(checked({}), takeNotes());
}

TEST_P(AGlobalNumber, ReturnsMinusNineWhenTheFlagIsOff) {
    service.flags[GetParam().key + 1] = false;
    EXPECT_EQ(-9, set(GetParam().high));
    EXPECT_EQ(checked({notSupportedLine()}), takeNotes());
}

TEST_P(AGlobalNumber, ReturnsMinusNineWithoutItsCapabilityOnly) {
    client.mCapabilities.speedSupported =
        GetParam().capability != &TTS::Capabilities::speedSupported;
    client.mCapabilities.pitchSupported =
        GetParam().capability != &TTS::Capabilities::pitchSupported;
    client.mCapabilities.volumeSupported =
        GetParam().capability != &TTS::Capabilities::volumeSupported;
    EXPECT_EQ(GetParam().capability != nullptr ? -9 : 0, set(GetParam().high));
    EXPECT_EQ(GetParam().capability != nullptr
                  ? checked({notSupportedLine()})
                  : checked({"ask locked()", request(GetParam().high)}),
              takeNotes());
}

TEST_P(AGlobalNumber, ReturnsMinusSevenWhileLockedAfterAllItsChecks) {
    service.locked = true;
    EXPECT_EQ(-7, set(GetParam().high));
    EXPECT_EQ(checked({"ask locked()"}), takeNotes());
    client.mLockOwner = true;
    EXPECT_EQ(0, set(GetParam().high));
    EXPECT_EQ(checked({request(GetParam().high)}), takeNotes());
}

TEST_P(AGlobalNumber, IsRefusedWithoutAnAddress) {
    EXPECT_EQ(-3, client.setGlobalConfig(keyOf(GetParam().key), nullptr));
    EXPECT_EQ(Lines{traceLine()}, takeNotes());
}

TEST_P(AGlobalNumber, ChangesNothingOfTheClients) {
    set(GetParam().high);
    const TTS::TtsSetting fresh("app");
    EXPECT_EQ(fresh.mSpeed, client.mSetting.mSpeed);
    EXPECT_EQ(fresh.mPitch, client.mSetting.mPitch);
    EXPECT_EQ(fresh.mVolume, client.mSetting.mVolume);
    EXPECT_EQ(fresh.mMediaVolume, client.mSetting.mMediaVolume);
    EXPECT_EQ(fresh.mTtsVolume, client.mSetting.mTtsVolume);
}

INSTANTIATE_TEST_SUITE_P(
    Each, AGlobalNumber,
    testing::Values(
        NumberKey{"speed", 2, false, "setGlobalRate", 100, 400, &TTS::Capabilities::speedSupported},
        NumberKey{"pitch", 4, true, "setGlobalPitch", 50, 200, &TTS::Capabilities::pitchSupported},
        NumberKey{"volume", 8, true, "setGlobalVolume", 0, 100,
                  &TTS::Capabilities::volumeSupported},
        NumberKey{"bgVolume", 10, false, "setBgVolume", 0, 100, nullptr},
        NumberKey{"ttsVolume", 12, false, "setTtsVolume", 0, 100, nullptr}),
    [](const auto& row) { return std::string(row.param.name); });

class AnyOtherKey : public support::JoinedClientTest {};

TEST_F(AnyOtherKey, GoesStraightToTheLockRuleAndTheProxyWhichRefusesIt) {
    for (const int32_t key : {0, 3, 5, 7, 9, 11, 13, 15, 16, 1000, -1}) {
        uint32_t value = 1;
        EXPECT_EQ(-3, client.setGlobalConfig(keyOf(key), &value));
        EXPECT_EQ(Lines({keyLine("setGlobalConfig", key), "ask locked()"}), takeNotes());
    }
}

TEST_F(AnyOtherKey, ReturnsMinusSevenWhileLocked) {
    service.locked = true;
    uint32_t value = 1;
    EXPECT_EQ(-7, client.setGlobalConfig(keyOf(3), &value));
}

TEST_F(AnyOtherKey, OneIsForwardedAsAWholeNumberUnchecked) {
    uint32_t value = 4294967295U;
    EXPECT_EQ(0, client.setGlobalConfig(keyOf(1), &value));
    EXPECT_EQ(Lines({keyLine("setGlobalConfig", 1), "ask locked()",
                     "ask setGlobalConfig(pid, 1, 4294967295)"}),
              takeNotes());
    EXPECT_EQ(-3, client.setGlobalConfig(keyOf(1), nullptr));
}

class TheGlobalVoice : public support::JoinedClientTest {
protected:
    TheGlobalVoice() { service.language = "en_US"; }

    int set(uint32_t voice) { return client.setGlobalConfig(GCONF_VOICE, &voice); }

    static Lines asked(const std::string& language, const Lines& end) {
        const std::string text = "TTSClientPrivate(), setGlobalConfig, get global language = ";
        Lines lines{keyLine("setGlobalConfig", 6), keyLine("globalConfig", 14),
                    "ask globalConfig(pid, 14)",
                    support::debugLine(2, text + "%s", text + language)};
        lines.insert(lines.end(), end.begin(), end.end());
        return lines;
    }

    static std::string filterLine(const std::string& filter) {
        const std::string text = "supportVoiceByFilter(), INI_LANGUAGE_WITH_VOICES = ";
        return support::debugLine(2, text + "%s", text + filter);
    }

    const std::string flagTrace = keyLine("enabled2", 7);
    const std::string flagQuestion = "ask enabled2(pid, 7)";
};

TEST_F(TheGlobalVoice, IsForwardedUpToTheNumberOfVoicesOfTheGlobalLanguage) {
    EXPECT_EQ(0, set(2));
    EXPECT_EQ(asked("en_US", {flagTrace, flagQuestion, filterLine(""), "ask locked()",
                              "ask setGlobalConfig(pid, 6, 2)"}),
              takeNotes());
}

TEST_F(TheGlobalVoice, ZeroMatchesNoVoiceAndIsForwarded) {
    EXPECT_EQ(0, set(0));
    EXPECT_EQ(
        asked("en_US", {flagTrace, flagQuestion, "ask locked()", "ask setGlobalConfig(pid, 6, 0)"}),
        takeNotes());
}

TEST_F(TheGlobalVoice, ReturnsMinusThreeAboveThatNumber) {
    EXPECT_EQ(-3, set(3));
    EXPECT_EQ(asked("en_US", {logged(1, "setGlobalVoice: %f, bad parameter\n",
                                     "setGlobalVoice: 3.000000, bad parameter\n")}),
              takeNotes());
    EXPECT_EQ(-3, set(4294967295U));
    EXPECT_EQ(asked("en_US", {logged(1, "setGlobalVoice: %f, bad parameter\n",
                                     "setGlobalVoice: 4294967295.000000, bad parameter\n")}),
              takeNotes());
}

TEST_F(TheGlobalVoice, IsCountedByTheServicesLanguageNotByTheClients) {
    client.mSetting.mLang = "en_US";
    service.language = "pt_PT";
    EXPECT_EQ(0, set(3));
    service.language = "fr_FR";
    EXPECT_EQ(-3, set(2));
}

TEST_F(TheGlobalVoice, ReturnsTheFailureOfTheQuestionForTheLanguage) {
    service.status[support::kGlobalConfig] = -41;
    EXPECT_EQ(-41, set(1));
    EXPECT_EQ(Lines({keyLine("setGlobalConfig", 6), keyLine("globalConfig", 14),
                     "ask globalConfig(pid, 14)"}),
              takeNotes());
}

TEST_F(TheGlobalVoice, IsForwardedUncheckedWhenTheServiceSpeaksNoneOfOurLanguages) {
    for (const char* language : {"de_DE", "na_NL", ""}) {
        service.language = language;
        EXPECT_EQ(0, set(99));
        EXPECT_EQ(asked(language, {"ask locked()", "ask setGlobalConfig(pid, 6, 99)"}),
                  takeNotes());
    }
}

TEST_F(TheGlobalVoice, StillMeetsTheLockThen) {
    service.language = "de_DE";
    service.locked = true;
    EXPECT_EQ(-7, set(99));
}

TEST_F(TheGlobalVoice, TakesSixteenCharactersWithoutATerminatorAsTheyAre) {
    service.language = "sixteencharacter";
    EXPECT_EQ(0, set(99));
    EXPECT_EQ(asked("sixteencharacter", {"ask locked()", "ask setGlobalConfig(pid, 6, 99)"}),
              takeNotes());
}

TEST_F(TheGlobalVoice, ReturnsTheFailureOfTheFlagQuestion) {
    service.status[support::kEnabled2] = -4;
    EXPECT_EQ(-4, set(1));
    EXPECT_EQ(asked("en_US", {flagTrace, flagQuestion}), takeNotes());
}

TEST_F(TheGlobalVoice, ReturnsMinusNineWhenVoicesAreSwitchedOff) {
    service.flags[7] = false;
    EXPECT_EQ(-9, set(1));
    EXPECT_EQ(asked("en_US", {flagTrace, flagQuestion, notSupportedLine()}), takeNotes());
}

TEST_F(TheGlobalVoice, ReturnsMinusNineWhenTheLanguageHasNone) {
    service.language = "es_ES";
    EXPECT_EQ(0, client.mCapabilities.voicesNum[2]);
    EXPECT_EQ(-9, set(0));
    EXPECT_EQ(asked("es_ES", {flagTrace, flagQuestion, notSupportedLine()}), takeNotes());
}

TEST_F(TheGlobalVoice, ReturnsMinusNineWithoutAWordWhenTheFilterRefusesIt) {
    INI_LANGUAGE_WITH_VOICES = "en_US.Ben";
    EXPECT_EQ(-9, set(1));
    EXPECT_EQ(asked("en_US", {flagTrace, flagQuestion, filterLine("en_US.Ben")}), takeNotes());
    EXPECT_EQ(0, set(2));
}

TEST_F(TheGlobalVoice, IsHeldAgainstEveryRecordOfThatNumber) {
    INI_LANGUAGE_WITH_VOICES = "en_US.Anna";
    client.mCapabilities.voices.push_back(support::voiceOf(LANG_EN_US, 1, "Zoe"));
    EXPECT_EQ(-9, set(1)) << "the second record of number 1 is not listed";
    takeNotes();
    INI_LANGUAGE_WITH_VOICES = "en_US.Anna,en_US.Zoe";
    EXPECT_EQ(0, set(1));
    const Lines notes = takeNotes();
    EXPECT_EQ(2, std::count(notes.begin(), notes.end(), filterLine("en_US.Anna,en_US.Zoe")));
}

TEST_F(TheGlobalVoice, IsComparedUnsignedWithANegativeNumberOfVoices) {
    client.mCapabilities.voicesNum[0] = -1;
    EXPECT_EQ(0, set(4000000000U));
    EXPECT_EQ(asked("en_US", {flagTrace, flagQuestion, "ask locked()",
                              "ask setGlobalConfig(pid, 6, 4000000000)"}),
              takeNotes());
}

TEST_F(TheGlobalVoice, IsRefusedWithoutAnAddress) {
    EXPECT_EQ(-3, client.setGlobalConfig(GCONF_VOICE, nullptr));
    EXPECT_EQ(Lines{keyLine("setGlobalConfig", 6)}, takeNotes());
}

class TheGlobalLanguage : public support::JoinedClientTest {
protected:
    int set(std::string code) { return client.setGlobalConfig(GCONF_LANGUAGE, &code[0]); }

    const std::string trace = keyLine("setGlobalConfig", 14);

    static std::string filterLine(const std::string& filter) {
        const std::string text = "languageByFilter(), INI_LANGUAGE_WITH_VOICES = ";
        return support::debugLine(2, text + "%s", text + filter);
    }
    static std::string unsupportedLine(const std::string& code, int id) {
        return logged(1, "setLanguage: %s, %d, not support \n",
                      "setLanguage: " + code + ", " + std::to_string(id) + ", not support \n");
    }
};

TEST_F(TheGlobalLanguage, IsForwardedAsTheCodeItself) {
    service.status[support::kSetGlobalConfig] = -32;
    EXPECT_EQ(-32, set("fr_FR"));
    EXPECT_EQ(
        Lines({trace, filterLine(""), "ask locked()", "ask setGlobalConfig(pid, 14, \"fr_FR\")"}),
        takeNotes());
}

TEST_F(TheGlobalLanguage, ReturnsMinusNineForALanguageThatTheServiceDoesNotSpeak) {
    EXPECT_EQ(-9, set("es_ES"));
    EXPECT_EQ(Lines({trace, unsupportedLine("es_ES", 2)}), takeNotes()) << "no filter question";
}

TEST_F(TheGlobalLanguage, ReturnsMinusNineForACodeThatIsNoneOfOurs) {
    for (const char* code : {"de_DE", "na_NL", "EN_US", "fr_FR ", ""}) {
        EXPECT_EQ(-9, set(code));
        EXPECT_EQ(Lines({trace, unsupportedLine(code, 5)}), takeNotes());
    }
}

TEST_F(TheGlobalLanguage, ReturnsMinusNineForThatCodeAlsoWhenTheServiceSpeaksSixLanguages) {
    client.mCapabilities.languages.assign(6, true);
    EXPECT_EQ(-9, set("de_DE"));
    EXPECT_EQ(Lines({trace, unsupportedLine("de_DE", 5)}), takeNotes());
}

TEST_F(TheGlobalLanguage, ReturnsMinusNineWhenTheFilterTakesItAwayAndSaysSoWithoutABlank) {
    INI_LANGUAGE_WITH_VOICES = "fr_FR.none";
    EXPECT_EQ(-9, set("fr_FR"));
    const std::string found = "languageByFilter(), language : ";
    EXPECT_EQ(Lines({trace, filterLine("fr_FR.none"),
                     support::debugLine(2, found + "%s, voice : %s", found + "fr_FR, voice : none"),
                     logged(1, "setLanguage: %s, %d, not support because of filter\n",
                            "setLanguage: fr_FR, 1, not support because of filter\n")}),
              takeNotes());
}

TEST_F(TheGlobalLanguage, MeetsTheLockAfterItsChecks) {
    service.locked = true;
    EXPECT_EQ(-7, set("fr_FR"));
    EXPECT_EQ(Lines({trace, filterLine(""), "ask locked()"}), takeNotes());
    EXPECT_EQ(-9, set("es_ES"));
}

TEST_F(TheGlobalLanguage, LeavesTheClientsOwnAlone) {
    set("fr_FR");
    EXPECT_EQ("na_NL", client.mSetting.mLang);
}

TEST_F(TheGlobalLanguage, ThrowsTheStandardLibrarysErrorForANullAddress) {
    try {
        (void)client.setGlobalConfig(GCONF_LANGUAGE, nullptr);
        ADD_FAILURE() << "nothing is thrown";
    } catch (const std::logic_error& error) {
        // Its own: a string made of a null pointer ends the process with some standard libraries.
        EXPECT_STREQ("setGlobalConfig: the language is a null pointer", error.what());
    }
    EXPECT_EQ(Lines{trace}, takeNotes());
}

class AReadOfGlobalConfig : public support::JoinedClientTest {};

TEST_F(AReadOfGlobalConfig, IsForwardedWhateverTheLock) {
    service.locked = true;
    service.number = 250;
    uint32_t speed = 0;
    EXPECT_EQ(0, client.globalConfig(GCONF_SPEED, &speed));
    EXPECT_EQ(250U, speed);
    EXPECT_EQ(Lines({keyLine("globalConfig", 2), "ask globalConfig(pid, 2)"}), takeNotes());
}

TEST_F(AReadOfGlobalConfig, GivesFloatsAndTheStatusOfTheService) {
    service.real = 1.25F;
    service.status[support::kGlobalConfig] = -33;
    float pitch = 0.0F;
    EXPECT_EQ(-33, client.globalConfig(GCONF_PITCH, &pitch));
    EXPECT_EQ(1.25F, pitch);
}

TEST_F(AReadOfGlobalConfig, GivesTheLanguageWithoutATerminator) {
    service.language = "fr_FR";
    char code[16] = "##########";
    EXPECT_EQ(0, client.globalConfig(GCONF_LANGUAGE, code));
    EXPECT_EQ("fr_FR#####", std::string(code));
}

TEST_F(AReadOfGlobalConfig, RefusesANullAddress) {
    EXPECT_EQ(-3, client.globalConfig(GCONF_SPEED, nullptr));
    EXPECT_EQ(-3, client.globalConfig(GCONF_LANGUAGE, nullptr));
    EXPECT_EQ(-3, client.enabled2(GCONF_SPEED_ENABLE, nullptr));
}

TEST_F(AReadOfGlobalConfig, OfAKeyWithoutAValueIsLeftToTheService) {
    service.status[support::kGlobalConfig] = -3;
    uint32_t untouched = 77;
    EXPECT_EQ(-3, client.globalConfig(GCONF_PITCH_ENABLE, &untouched));
    EXPECT_EQ(77U, untouched);
    EXPECT_EQ(-3, client.globalConfig(GCONF_PITCH_ENABLE, nullptr));
    EXPECT_EQ(Lines({keyLine("globalConfig", 5), "ask globalConfig(pid, 5)",
                     keyLine("globalConfig", 5), "ask globalConfig(pid, 5)"}),
              takeNotes());
}

TEST_F(AReadOfGlobalConfig, GivesAFlagAndTheStatusOfTheService) {
    service.locked = true;
    service.flags[5] = false;
    bool flag = true;
    EXPECT_EQ(0, client.enabled2(GCONF_PITCH_ENABLE, &flag));
    EXPECT_FALSE(flag);
    EXPECT_EQ(Lines({keyLine("enabled2", 5), "ask enabled2(pid, 5)"}), takeNotes());
    service.status[support::kEnabled2] = -34;
    EXPECT_EQ(-34, client.enabled2(GCONF_SPEED_ENABLE, &flag));
    EXPECT_TRUE(flag);
}

}  // namespace
