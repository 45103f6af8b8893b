// SPDX-License-Identifier: Apache-2.0
#include <ttscommon/ttscommon.h>

#include <algorithm>
#include <thread>

#include "tests/client/ClientTest.h"

namespace {

using platform::logged;
using support::debugLine;
using support::keyLine;
using support::Lines;
using support::notSupportedLine;
using support::takeNotes;
using support::voiceOf;

std::string filterLine(const std::string& filter) {
    const std::string text = "supportVoiceByFilter(), INI_LANGUAGE_WITH_VOICES = ";
    return debugLine(2, text + "%s", text + filter);
}

const std::string kLanguageTrace = keyLine("globalConfig", 14);
const std::string kLanguageQuestion = "ask globalConfig(pid, 14)";
const std::string kFlagTrace = keyLine("enabled2", 7);
const std::string kFlagQuestion = "ask enabled2(pid, 7)";

std::string globalLanguageLine(const std::string& operation, const std::string& language,
                               const std::string& end = "") {
    const std::string text = "TTSClientPrivate(), " + operation + ", get global language = ";
    return debugLine(2, text + "%s" + end, text + language + end);
}

class TheVoiceTable : public support::JoinedClientTest {
protected:
    TheVoiceTable() { client.mSetting.mLang = "en_US"; }

    int list() {
        voices = reinterpret_cast<TTS::VoiceInfo**>(&unset);
        return client.supportVoicesInfo(&voices);
    }

    static std::string idLine(int id) {
        const std::string text = "TTSClientPrivate(), supportVoicesInfo, get language id = ";
        return debugLine(2, text + "%d", text + std::to_string(id));
    }

    static std::string entryLine(int slot, int language, int id, const std::string& name) {
        return debugLine(2, "gVoiceInfo[%d].langId = %d, .id = %d, .name = %s",
                         "gVoiceInfo[" + std::to_string(slot) +
                             "].langId = " + std::to_string(language) +
                             ", .id = " + std::to_string(id) + ", .name = " + name);
    }

    const std::string fullLine =
        logged(1, "voice array size is not enough.\n", "voice array size is not enough.\n");

    int unset = 0;
    TTS::VoiceInfo** voices = nullptr;
};

TEST_F(TheVoiceTable, HoldsTheVoicesOfTheClientsLanguageInTheServicesOrder) {
    EXPECT_EQ(0, list());
    EXPECT_EQ(Lines({idLine(0), filterLine(""), entryLine(0, 0, 1, "Anna"), filterLine(""),
                     entryLine(1, 0, 2, "Ben")}),
              takeNotes());
    ASSERT_TRUE(voices != nullptr);
    EXPECT_EQ(LANG_EN_US, voices[0]->langId);
    EXPECT_EQ(1U, voices[0]->id);
    EXPECT_STREQ("Anna", voices[0]->name);
    EXPECT_EQ(2U, voices[1]->id);
    EXPECT_STREQ("Ben", voices[1]->name);
    EXPECT_TRUE(voices[2] == nullptr);
}

TEST_F(TheVoiceTable, IsEndedByNullAfterASingleVoice) {
    list();
    client.mSetting.mLang = "fr_FR";
    EXPECT_EQ(0, list());
    ASSERT_TRUE(voices != nullptr);
    EXPECT_STREQ("Claire", voices[0]->name);
    EXPECT_TRUE(voices[1] == nullptr);
}

TEST_F(TheVoiceTable, IsFullWithTwoAndReportsTheThird) {
    client.mSetting.mLang = "pt_PT";
    EXPECT_EQ(0, list());
    EXPECT_EQ(Lines({idLine(4), filterLine(""), entryLine(0, 4, 1, "Rita"), filterLine(""),
                     entryLine(1, 4, 2, "Rui"), fullLine}),
              takeNotes());
    EXPECT_STREQ("Rita", voices[0]->name);
    EXPECT_STREQ("Rui", voices[1]->name);
    EXPECT_TRUE(voices[2] == nullptr);
}

TEST_F(TheVoiceTable, ReportsAThirdVoiceEvenOneThatTheFilterWouldRefuse) {
    client.mSetting.mLang = "pt_PT";
    INI_LANGUAGE_WITH_VOICES = "pt_PT.Rita,pt_PT.Rui";
    EXPECT_EQ(0, list());
    EXPECT_EQ(fullLine, takeNotes().back());
}

TEST_F(TheVoiceTable, HasRoomForAThirdVoiceWhenTheFilterRefusesAnEarlierOne) {
    client.mSetting.mLang = "pt_PT";
    INI_LANGUAGE_WITH_VOICES = "pt_PT.Rita,pt_PT.Sara";
    EXPECT_EQ(0, list());
    EXPECT_STREQ("Rita", voices[0]->name);
    EXPECT_STREQ("Sara", voices[1]->name);
    EXPECT_EQ(entryLine(1, 4, 3, "Sara"), takeNotes().back());
}

TEST_F(TheVoiceTable, StopsAtTheOverflow) {
    client.mSetting.mLang = "pt_PT";
    client.mCapabilities.voices.push_back(voiceOf(LANG_PT_PT, 4, "Tiago"));
    list();
    const Lines notes = takeNotes();
    EXPECT_EQ(1, std::count(notes.begin(), notes.end(), fullLine));
}

TEST_F(TheVoiceTable, IsNullWhenTheFilterRefusesEveryVoice) {
    INI_LANGUAGE_WITH_VOICES = "en_US.none";
    EXPECT_EQ(0, list());
    EXPECT_TRUE(voices == nullptr);
    EXPECT_EQ(Lines({idLine(0), filterLine("en_US.none"), filterLine("en_US.none")}), takeNotes());
}

TEST_F(TheVoiceTable, IsNullWhenTheServiceHasNoVoices) {
    client.mCapabilities.voices.clear();
    EXPECT_EQ(0, list());
    EXPECT_TRUE(voices == nullptr);
    EXPECT_EQ(Lines{idLine(0)}, takeNotes());
}

TEST_F(TheVoiceTable, IsSharedByAllClientsAndThreadsOfTheProcess) {
    TTS::TTSClientPrivate other("other", nullptr);
    other.mCapabilities = client.mCapabilities;
    other.mSetting.mLang = "fr_FR";
    list();
    TTS::VoiceInfo** others = nullptr;
    std::thread([&] { EXPECT_EQ(0, other.supportVoicesInfo(&others)); }).join();
    EXPECT_EQ(voices, others);
    EXPECT_STREQ("Claire", voices[0]->name) << "the other client's question overwrites the answer";
    EXPECT_TRUE(voices[1] == nullptr);
}

TEST_F(TheVoiceTable, IsLeftAloneWhenTheServiceHasNoVoices) {
    TTS::TTSClientPrivate other("other", nullptr);
    other.mSetting.mLang = "en_US";
    list();
    TTS::VoiceInfo** others = voices;
    EXPECT_EQ(0, other.supportVoicesInfo(&others));
    EXPECT_TRUE(others == nullptr);
    ASSERT_TRUE(voices[0] != nullptr) << "what the first client was given still stands";
    EXPECT_STREQ("Anna", voices[0]->name);
    EXPECT_STREQ("Ben", voices[1]->name);
}

TEST_F(TheVoiceTable, IsNullForALanguageWithoutVoices) {
    client.mSetting.mLang = "ko_KR";
    EXPECT_EQ(0, list());
    EXPECT_TRUE(voices == nullptr);
}

TEST_F(TheVoiceTable, CutsANameToSixtyThreeCharacters) {
    client.mCapabilities.voices = {voiceOf(LANG_EN_US, 1, std::string(64, 'n'))};
    EXPECT_EQ(0, list());
    EXPECT_EQ(std::string(63, 'n'), voices[0]->name);
    EXPECT_EQ(entryLine(0, 0, 1, std::string(63, 'n')), takeNotes().back());
}

TEST_F(TheVoiceTable, UsesTheServicesLanguageWhileTheClientHasNone) {
    client.mSetting.mLang = "na_NL";
    service.language = "fr_FR";
    EXPECT_EQ(0, list());
    EXPECT_EQ(Lines({kLanguageTrace, kLanguageQuestion,
                     globalLanguageLine("supportVoicesInfo", "fr_FR", " SUCCESS"), idLine(1),
                     filterLine(""), entryLine(0, 1, 1, "Claire")}),
              takeNotes());
    EXPECT_STREQ("Claire", voices[0]->name);
}

TEST_F(TheVoiceTable, IsNullWithTheErrorWhenTheServiceDoesNotTellItsLanguage) {
    client.mSetting.mLang = "de_DE";
    service.status[support::kGlobalConfig] = -41;
    EXPECT_EQ(-41, list());
    EXPECT_TRUE(voices == nullptr);
    EXPECT_EQ(Lines({kLanguageTrace, kLanguageQuestion}), takeNotes());
}

TEST_F(TheVoiceTable, IsNullWithMinusThreeWhenTheServiceSpeaksNoneOfOurLanguages) {
    client.mSetting.mLang = "na_NL";
    service.language = "na_NL";
    EXPECT_EQ(-3, list());
    EXPECT_TRUE(voices == nullptr);
    EXPECT_EQ(Lines({kLanguageTrace, kLanguageQuestion,
                     globalLanguageLine("supportVoicesInfo", "na_NL", " SUCCESS")}),
              takeNotes());
}

TEST_F(TheVoiceTable, RefusesANullAddress) {
    EXPECT_EQ(-3, client.supportVoicesInfo(nullptr));
    EXPECT_EQ(Lines{}, takeNotes());
}

class SetVoice : public support::JoinedClientTest {
protected:
    SetVoice() { client.mSetting.mLang = "en_US"; }

    int set(uint32_t voice) { return client.setVoice(&voice); }

    static std::string trace(const std::string& voice) {
        return logged(2, "[Client] %s(), voice = %d\n",
                      "[Client] setVoice(), voice = " + voice + "\n");
    }
    static std::string rejectionLine(const std::string& voice) {
        return logged(1, "setVoice: %d, bad parameter\n",
                      "setVoice: " + voice + ", bad parameter\n");
    }
};

TEST_F(SetVoice, StoresAVoiceUpToTheNumberOfVoicesAndTellsTheApplication) {
    EXPECT_EQ(0, set(2));
    EXPECT_EQ(Lines({trace("2"), kFlagTrace, kFlagQuestion, filterLine(""), "notify 6 0 3"}),
              takeNotes());
    EXPECT_EQ(2U, client.mSetting.mVoice);
}

TEST_F(SetVoice, DoesNotTellTheApplicationOfTheVoiceItHasAlready) {
    set(2);
    takeNotes();
    EXPECT_EQ(0, set(2));
    EXPECT_EQ(Lines({trace("2"), kFlagTrace, kFlagQuestion, filterLine("")}), takeNotes());
}

TEST_F(SetVoice, ReturnsMinusElevenForAClientWithoutALanguageOfItsOwn) {
    client.mSetting.mLang = "na_NL";
    EXPECT_EQ(-11, set(1));
    EXPECT_EQ(Lines{trace("1")}, takeNotes());
}

TEST_F(SetVoice, ReturnsMinusThreeAboveTheNumberOfVoices) {
    EXPECT_EQ(-3, set(3));
    EXPECT_EQ(Lines({trace("3"), rejectionLine("3")}), takeNotes());
    EXPECT_EQ(-3, set(65535)) << "no exception here";
    EXPECT_EQ(Lines({trace("65535"), rejectionLine("65535")}), takeNotes());
    EXPECT_EQ(-3, set(4294967295U));
    EXPECT_EQ(Lines({trace("-1"), rejectionLine("-1")}), takeNotes());
    EXPECT_EQ(65535U, client.mSetting.mVoice);
}

TEST_F(SetVoice, ReturnsMinusThreeBeforeAnyConnection) {
    TTS::TTSClientPrivate fresh("fresh", nullptr);
    fresh.mSetting.mLang = "en_US";
    uint32_t voice = 1;
    EXPECT_EQ(-3, fresh.setVoice(&voice));
    voice = 0;
    EXPECT_EQ(-5, fresh.setVoice(&voice));
}

TEST_F(SetVoice, ReturnsTheFailureOfTheFlagQuestion) {
    service.status[support::kEnabled2] = -4;
    EXPECT_EQ(-4, set(1));
    EXPECT_EQ(Lines({trace("1"), kFlagTrace, kFlagQuestion}), takeNotes());
}

TEST_F(SetVoice, ReturnsMinusNineWhenVoicesAreSwitchedOff) {
    service.flags[7] = false;
    EXPECT_EQ(-9, set(1));
    EXPECT_EQ(Lines({trace("1"), kFlagTrace, kFlagQuestion, notSupportedLine()}), takeNotes());
    EXPECT_EQ(65535U, client.mSetting.mVoice);
}

TEST_F(SetVoice, ReturnsMinusNineWhenTheLanguageHasNone) {
    client.mSetting.mLang = "ko_KR";
    EXPECT_EQ(-9, set(0));
    EXPECT_EQ(Lines({trace("0"), kFlagTrace, kFlagQuestion, notSupportedLine()}), takeNotes());
}

TEST_F(SetVoice, ReturnsMinusNineWithoutAWordWhenTheFilterRefusesTheVoice) {
    INI_LANGUAGE_WITH_VOICES = "en_US.Ben";
    EXPECT_EQ(-9, set(1));
    EXPECT_EQ(Lines({trace("1"), kFlagTrace, kFlagQuestion, filterLine("en_US.Ben")}), takeNotes());
    EXPECT_EQ(65535U, client.mSetting.mVoice);
    EXPECT_EQ(0, set(2));
}

TEST_F(SetVoice, HoldsTheFilterAgainstVoicesOfItsLanguageAndNumberOnly) {
    INI_LANGUAGE_WITH_VOICES = "fr_FR.none,pt_PT.none";
    EXPECT_EQ(0, set(1));
    const Lines notes = takeNotes();
    EXPECT_EQ(1, std::count(notes.begin(), notes.end(), filterLine("fr_FR.none,pt_PT.none")));
}

TEST_F(SetVoice, IsComparedUnsignedWithANegativeNumberOfVoices) {
    client.mCapabilities.voicesNum[0] = -1;
    EXPECT_EQ(0, set(4000000000U));
    EXPECT_EQ(Lines({trace("-294967296"), kFlagTrace, kFlagQuestion, "notify 6 0 3"}), takeNotes());
    EXPECT_EQ(4000000000U, client.mSetting.mVoice);
}

TEST_F(SetVoice, DoesNotLookAtTheLock) {
    service.locked = true;
    EXPECT_EQ(0, set(1));
}

TEST_F(SetVoice, RefusesANullAddressWithoutAWord) {
    EXPECT_EQ(-3, client.setVoice(nullptr));
    EXPECT_EQ(Lines{}, takeNotes());
}

class TheVoiceRange : public support::JoinedClientTest {};

TEST_F(TheVoiceRange, IsThatOfTheClientsLanguageWithoutAskingTheService) {
    client.mSetting.mLang = "pt_PT";
    EXPECT_EQ(1, client.ttsVoiceMin());
    EXPECT_EQ(3, client.ttsVoiceMax());
    client.mSetting.mLang = "es_ES";
    EXPECT_EQ(0, client.ttsVoiceMin());
    EXPECT_EQ(0, client.ttsVoiceMax());
    EXPECT_EQ(Lines{}, takeNotes());
}

TEST_F(TheVoiceRange, PassesANegativeNumberOfVoicesOn) {
    client.mSetting.mLang = "en_US";
    client.mCapabilities.voicesNum[0] = -1;
    EXPECT_EQ(1, client.ttsVoiceMin());
    EXPECT_EQ(-1, client.ttsVoiceMax());
}

TEST_F(TheVoiceRange, IsZeroAlsoWhenTheServiceCountsVoicesOfASixthLanguage) {
    client.mCapabilities.voicesNum.assign(6, 3);
    service.language = "de_DE";
    EXPECT_EQ(0, client.ttsVoiceMin());
    EXPECT_EQ(0, client.ttsVoiceMax());
}

TEST_F(TheVoiceRange, IsThatOfTheServicesLanguageWhileTheClientHasNone) {
    service.language = "en_US";
    EXPECT_EQ(1, client.ttsVoiceMin());
    EXPECT_EQ(2, client.ttsVoiceMax());
    EXPECT_EQ(
        Lines({kLanguageTrace, kLanguageQuestion, globalLanguageLine("ttsVoiceMin", "en_US"),
               kLanguageTrace, kLanguageQuestion, globalLanguageLine("ttsVoiceMax", "en_US")}),
        takeNotes());
}

TEST_F(TheVoiceRange, IsZeroWhenTheServiceSpeaksNoneOfOurLanguages) {
    service.language = "de_DE";
    EXPECT_EQ(0, client.ttsVoiceMin());
    EXPECT_EQ(0, client.ttsVoiceMax());
    EXPECT_EQ(
        Lines({kLanguageTrace, kLanguageQuestion, globalLanguageLine("ttsVoiceMin", "de_DE"),
               kLanguageTrace, kLanguageQuestion, globalLanguageLine("ttsVoiceMax", "de_DE")}),
        takeNotes());
}

TEST_F(TheVoiceRange, IsZeroWhenTheServiceDoesNotTellItsLanguage) {
    service.language = "en_US";
    service.status[support::kGlobalConfig] = -1;
    EXPECT_EQ(0, client.ttsVoiceMin());
    EXPECT_EQ(0, client.ttsVoiceMax());
    EXPECT_EQ(Lines({kLanguageTrace, kLanguageQuestion, kLanguageTrace, kLanguageQuestion}),
              takeNotes());
}

class TheChoiceOfVoices : public support::JoinedClientTest {
protected:
    TheChoiceOfVoices() { client.mSetting.mLang = "en_US"; }
};

TEST_F(TheChoiceOfVoices, IsOpenWhenTheLanguageHasVoicesAndTheFlagIsOn) {
    EXPECT_EQ(1, client.supportVoicesNum());
    EXPECT_EQ(Lines({kFlagTrace, kFlagQuestion}), takeNotes());
}

TEST_F(TheChoiceOfVoices, IsOpenAlsoForANegativeNumberOfVoices) {
    client.mCapabilities.voicesNum[0] = -1;
    EXPECT_EQ(1, client.supportVoicesNum());
}

TEST_F(TheChoiceOfVoices, IsClosedWithALogLineWhenTheFlagIsOff) {
    service.flags[7] = false;
    EXPECT_EQ(0, client.supportVoicesNum());
    EXPECT_EQ(Lines({kFlagTrace, kFlagQuestion, notSupportedLine()}), takeNotes());
}

TEST_F(TheChoiceOfVoices, IsClosedWithALogLineWhenTheLanguageHasNoVoices) {
    client.mSetting.mLang = "es_ES";
    EXPECT_EQ(0, client.supportVoicesNum());
    EXPECT_EQ(Lines({kFlagTrace, kFlagQuestion, notSupportedLine()}), takeNotes());
}

TEST_F(TheChoiceOfVoices, IsClosedWithoutAWordWhenTheFlagQuestionFails) {
    service.status[support::kEnabled2] = -4;
    EXPECT_EQ(0, client.supportVoicesNum());
    EXPECT_EQ(Lines({kFlagTrace, kFlagQuestion}), takeNotes());
}

TEST_F(TheChoiceOfVoices, GoesByTheServicesLanguageWhileTheClientHasNone) {
    client.mSetting.mLang = "na_NL";
    service.language = "fr_FR";
    EXPECT_EQ(1, client.supportVoicesNum());
    EXPECT_EQ(Lines({kLanguageTrace, kLanguageQuestion,
                     globalLanguageLine("supportVoicesNum", "fr_FR"), kFlagTrace, kFlagQuestion}),
              takeNotes());
}

TEST_F(TheChoiceOfVoices, IsClosedWhenTheLanguageIsUnknown) {
    client.mSetting.mLang = "na_NL";
    service.language = "xx";
    EXPECT_EQ(0, client.supportVoicesNum());
    EXPECT_EQ(
        Lines({kLanguageTrace, kLanguageQuestion, globalLanguageLine("supportVoicesNum", "xx")}),
        takeNotes());
    service.status[support::kGlobalConfig] = 9;
    EXPECT_EQ(0, client.supportVoicesNum());
    EXPECT_EQ(Lines({kLanguageTrace, kLanguageQuestion}), takeNotes());
}

}  // namespace
