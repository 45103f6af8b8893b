// SPDX-License-Identifier: Apache-2.0
#include <ttscommon/ttscommon.h>

#include <ostream>
#include <string>

#include "tests/client/ClientTest.h"

namespace {

using support::debugLine;
using support::Lines;
using support::takeNotes;
using support::voiceOf;

const std::string kVoiceFunction = "supportVoiceByFilter()";
const std::string kLanguageFunction = "languageByFilter()";

std::string textLine(const std::string& function, const std::string& filter) {
    return debugLine(2, function + ", INI_LANGUAGE_WITH_VOICES = %s",
                     function + ", INI_LANGUAGE_WITH_VOICES = " + filter);
}

std::string foundLine(const std::string& function, const std::string& code,
                      const std::string& voice) {
    return debugLine(2, function + ", language : %s, voice : %s",
                     function + ", language : " + code + ", voice : " + voice);
}

/// `text` as it can stand in the name of a test.
std::string printable(std::string text) {
    for (char& c : text) {
        c = c >= ' ' && c <= '~' ? c : '?';
    }
    return text;
}

/// A filter text, a question, and the whole answer.
struct VoiceRow {
    const char* filter;
    EN_VOXTREL_LANGUAGE language;
    const char* voice;
    int result;
    bool listed;
    const char* code;  ///< of the item that was found, where it was
};

void PrintTo(const VoiceRow& row, std::ostream* out) {
    *out << row.language << " '" << row.voice << "' in '" << printable(row.filter) << "'";
}

class AVoice : public support::ClientTest, public testing::WithParamInterface<VoiceRow> {};

TEST_P(AVoice, IsLookedUpInTheFilter) {
    INI_LANGUAGE_WITH_VOICES = GetParam().filter;
    TTS::VoiceInfo voice = voiceOf(GetParam().language, 1, GetParam().voice);
    for (const bool before : {true, false}) {
        bool listed = before;
        EXPECT_EQ(GetParam().result, client.supportVoiceByFilter(&voice, &listed));
        EXPECT_EQ(GetParam().listed, listed);
        Lines expected{textLine(kVoiceFunction, GetParam().filter)};
        if (GetParam().listed) {
            expected.push_back(foundLine(kVoiceFunction, GetParam().code, GetParam().voice));
        }
        EXPECT_EQ(expected, takeNotes());
    }
}

INSTANTIATE_TEST_SUITE_P(
    InAFilter, AVoice,
    testing::Values(VoiceRow{"", LANG_EN_US, "Anna", 0, false, ""},
                    VoiceRow{"en_US.Anna", LANG_EN_US, "Anna", 1, true, "en_US"},
                    VoiceRow{"en_US.Anna", LANG_EN_US, "anna", 1, false, ""},
                    VoiceRow{"en_US.Anna", LANG_EN_US, "Ann", 1, false, ""},
                    VoiceRow{"en_US.Anna", LANG_FR_FR, "Anna", 0, false, ""},
                    VoiceRow{"en_US.Ben,en_US.Anna", LANG_EN_US, "Anna", 1, true, "en_US"},
                    VoiceRow{"en_US.none", LANG_EN_US, "Anna", 1, false, ""},
                    VoiceRow{"en_US.none", LANG_EN_US, "none", 1, true, "en_US"},
                    VoiceRow{"fr_FR.Claire,en_US.Anna", LANG_EN_US, "Anna", 1, true, "en_US"},
                    // Only the first "." splits, and nothing is trimmed.
                    VoiceRow{"en_US.Anna.2", LANG_EN_US, "Anna.2", 1, true, "en_US"},
                    VoiceRow{"en_US. Anna", LANG_EN_US, "Anna", 1, false, ""},
                    VoiceRow{" en_US.Anna", LANG_EN_US, "Anna", 0, false, ""},
                    VoiceRow{"en_US.Anna ", LANG_EN_US, "Anna", 1, false, ""},
                    VoiceRow{"en_US.", LANG_EN_US, "", 1, true, "en_US"},
                    // Without a "." the item is both code and name.
                    VoiceRow{"en_US", LANG_EN_US, "en_US", 1, true, "en_US"},
                    VoiceRow{"en_US", LANG_EN_US, "Anna", 1, false, ""},
                    // Codes that are none of ours all count as the language "none".
                    VoiceRow{"de_DE.Hans", LANG_NA, "Hans", 1, true, "de_DE"},
                    VoiceRow{",", LANG_EN_US, "", 0, false, ""},
                    VoiceRow{",", LANG_NA, "", 1, true, ""},
                    VoiceRow{",,en_US.Anna,", LANG_EN_US, "Anna", 1, true, "en_US"},
                    VoiceRow{".", LANG_EN_US, "", 0, false, ""},
                    VoiceRow{"...,.en_US,\xFF\xFE.\x01", LANG_EN_US, "Anna", 0, false, ""}));

class TheVoiceFilter : public support::ClientTest {};

TEST_F(TheVoiceFilter, StopsAtTheFirstItemThatNamesTheVoice) {
    INI_LANGUAGE_WITH_VOICES = "en_US.Anna,en_US.Anna";
    TTS::VoiceInfo anna = voiceOf(LANG_EN_US, 1, "Anna");
    bool listed = false;
    EXPECT_EQ(1, client.supportVoiceByFilter(&anna, &listed));
    EXPECT_EQ(2U, takeNotes().size());
}

TEST_F(TheVoiceFilter, TreatsAMissingTextAsAnEmptyOne) {
    INI_LANGUAGE_WITH_VOICES = nullptr;
    TTS::VoiceInfo anna = voiceOf(LANG_EN_US, 1, "Anna");
    bool listed = true;
    EXPECT_EQ(0, client.supportVoiceByFilter(&anna, &listed));
    EXPECT_FALSE(listed);
    EXPECT_EQ(0, client.languageByFilter(LANG_EN_US));
    EXPECT_EQ(Lines({textLine(kVoiceFunction, ""), textLine(kLanguageFunction, "")}), takeNotes());
}

TEST_F(TheVoiceFilter, ReadsANameWithoutATerminatorUpToItsSixtyFourBytes) {
    const std::string name(64, 'x');
    const std::string filter = "en_US." + name;
    INI_LANGUAGE_WITH_VOICES = filter.c_str();
    TTS::VoiceInfo voice = voiceOf(LANG_EN_US, 1, name);
    bool listed = false;
    EXPECT_EQ(1, client.supportVoiceByFilter(&voice, &listed));
    EXPECT_TRUE(listed);
}

TEST_F(TheVoiceFilter, TakesNullForNoVoiceAndForAnAnswerNobodyWants) {
    INI_LANGUAGE_WITH_VOICES = "en_US.Anna";
    bool listed = true;
    EXPECT_EQ(0, client.supportVoiceByFilter(nullptr, &listed));
    EXPECT_FALSE(listed);
    EXPECT_EQ(Lines{}, takeNotes());
    TTS::VoiceInfo anna = voiceOf(LANG_EN_US, 1, "Anna");
    EXPECT_EQ(1, client.supportVoiceByFilter(&anna, nullptr));
}

TEST_F(TheVoiceFilter, SurvivesATextOfMegabytes) {
    std::string filter(4U << 20U, ',');
    filter += "en_US." + std::string(1U << 20U, 'y') + ",fr_FR.none,en_US.Anna";
    INI_LANGUAGE_WITH_VOICES = filter.c_str();
    TTS::VoiceInfo anna = voiceOf(LANG_EN_US, 1, "Anna");
    bool listed = false;
    EXPECT_EQ(1, client.supportVoiceByFilter(&anna, &listed));
    EXPECT_TRUE(listed);
    EXPECT_EQ(1, client.languageByFilter(LANG_FR_FR));
}

TEST_F(TheVoiceFilter, DoesNotTakeTheTextForAFormat) {
    INI_LANGUAGE_WITH_VOICES = "%s%n%s.%d,en_US.%n";
    TTS::VoiceInfo voice = voiceOf(LANG_EN_US, 1, "%n");
    bool listed = false;
    EXPECT_EQ(1, client.supportVoiceByFilter(&voice, &listed));
    EXPECT_EQ(Lines({textLine(kVoiceFunction, "%s%n%s.%d,en_US.%n"),
                     foundLine(kVoiceFunction, "en_US", "%n")}),
              takeNotes());
}

struct LanguageRow {
    const char* filter;
    EN_VOXTREL_LANGUAGE language;
    const char* code;  ///< of the item that takes the language away; null where none does
};

void PrintTo(const LanguageRow& row, std::ostream* out) {
    *out << row.language << " in '" << printable(row.filter) << "'";
}

class ALanguage : public support::ClientTest, public testing::WithParamInterface<LanguageRow> {};

TEST_P(ALanguage, IsTakenAwayByAnItemWithNone) {
    INI_LANGUAGE_WITH_VOICES = GetParam().filter;
    const bool gone = GetParam().code != nullptr;
    EXPECT_EQ(gone ? 1 : 0, client.languageByFilter(GetParam().language));
    Lines expected{textLine(kLanguageFunction, GetParam().filter)};
    if (gone) {
        const std::string item(GetParam().code);
        expected.push_back(foundLine(kLanguageFunction, item, "none"));
    }
    EXPECT_EQ(expected, takeNotes());
}

INSTANTIATE_TEST_SUITE_P(
    InAFilter, ALanguage,
    testing::Values(LanguageRow{"", LANG_EN_US, nullptr},
                    LanguageRow{"en_US.none", LANG_EN_US, "en_US"},
                    LanguageRow{"en_US.none", LANG_FR_FR, nullptr},
                    LanguageRow{"en_US.None", LANG_EN_US, nullptr},
                    LanguageRow{"en_US.none ", LANG_EN_US, nullptr},
                    LanguageRow{"en_US. none", LANG_EN_US, nullptr},
                    LanguageRow{"en_US.none.x", LANG_EN_US, nullptr},
                    LanguageRow{"en_US.Anna", LANG_EN_US, nullptr},
                    LanguageRow{"en_US.Anna,en_US.none", LANG_EN_US, "en_US"},
                    LanguageRow{"en_US.none,fr_FR.VoiceA", LANG_EN_US, "en_US"},
                    LanguageRow{"en_US.none,fr_FR.VoiceA", LANG_FR_FR, nullptr},
                    LanguageRow{"none", LANG_EN_US, nullptr},
                    // Codes that are none of ours all count as the language "none".
                    LanguageRow{"none", LANG_NA, "none"},
                    LanguageRow{"de_DE.none", LANG_NA, "de_DE"},
                    LanguageRow{".none", LANG_NA, ""}));

}  // namespace
