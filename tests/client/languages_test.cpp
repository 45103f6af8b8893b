// SPDX-License-Identifier: Apache-2.0
#include <ttscommon/ttscommon.h>

#include <algorithm>

#include "tests/client/ClientTest.h"

namespace {

using platform::logged;
using support::debugLine;
using support::Lines;
using support::takeNotes;

std::string filterLine(const std::string& filter) {
    const std::string text = "languageByFilter(), INI_LANGUAGE_WITH_VOICES = ";
    return debugLine(2, text + "%s", text + filter);
}

std::string takenAwayLine(const std::string& code) {
    const std::string text = "languageByFilter(), language : ";
    return debugLine(2, text + "%s, voice : %s", text + code + ", voice : none");
}

class TheUsableLanguages : public support::JoinedClientTest {
protected:
    const std::string enterLine = debugLine(2, "TTSClientPrivate(), enter supportLanguages",
                                            "TTSClientPrivate(), enter supportLanguages");
    static std::string resultLine(const std::string& languages) {
        const std::string text = "TTSClientPrivate(), mSupportedLanguages = ";
        return debugLine(2, text + "%s", text + languages);
    }
};

TEST_F(TheUsableLanguages, AreThoseThatTheServiceSpeaksInIdOrder) {
    EXPECT_EQ("en_US,fr_FR,pt_PT", client.supportLanguages());
    EXPECT_EQ(Lines({enterLine, filterLine(""), filterLine(""), filterLine(""),
                     resultLine("en_US,fr_FR,pt_PT")}),
              takeNotes());
}

TEST_F(TheUsableLanguages, LackThoseThatTheFilterTakesAway) {
    client.mCapabilities.languages = {true, true, true, false, false};
    const std::string filter = "en_US.none,fr_FR.VoiceA";
    INI_LANGUAGE_WITH_VOICES = filter.c_str();
    EXPECT_EQ("fr_FR,es_ES", client.supportLanguages());
    EXPECT_EQ(Lines({enterLine, filterLine(filter), takenAwayLine("en_US"), filterLine(filter),
                     filterLine(filter), resultLine("fr_FR,es_ES")}),
              takeNotes());
}

TEST_F(TheUsableLanguages, AreWorkedOutOnceForAClient) {
    client.supportLanguages();
    client.mCapabilities.languages = {false, false, true, false, false};
    takeNotes();
    EXPECT_EQ("en_US,fr_FR,pt_PT", client.supportLanguages());
    EXPECT_EQ(Lines{}, takeNotes());
    EXPECT_EQ("en_US,fr_FR,pt_PT", client.mSupportedLanguages);
}

TEST_F(TheUsableLanguages, AreWorkedOutAgainWhileThereAreNone) {
    client.mCapabilities.languages.assign(5, false);
    EXPECT_EQ("", client.supportLanguages());
    EXPECT_EQ(Lines({enterLine, resultLine("")}), takeNotes());
    client.mCapabilities.languages[3] = true;
    EXPECT_EQ("ko_KR", client.supportLanguages());
}

TEST_F(TheUsableLanguages, AreNoneBeforeAConnection) {
    TTS::TTSClientPrivate fresh("fresh", nullptr);
    EXPECT_EQ("", fresh.supportLanguages());
}

TEST_F(TheUsableLanguages, AreOursHoweverManyTheServiceSpeaks) {
    client.mCapabilities.languages.assign(6, true);
    EXPECT_EQ("en_US,fr_FR,es_ES,ko_KR,pt_PT", client.supportLanguages());
}

class SetLanguage : public support::JoinedClientTest {
protected:
    int set(std::string code) { return client.setLanguage(&code[0]); }

    static std::string trace(const std::string& code) {
        return debugLine(2, "[Client] %s(), setLanguage = %s",
                         "[Client] setLanguage(), setLanguage = " + code);
    }
};

TEST_F(SetLanguage, StoresTheCodeResetsTheVoiceAndTellsTheApplication) {
    client.mSetting.mVoice = 7;
    EXPECT_EQ(0, set("fr_FR"));
    EXPECT_EQ(Lines({trace("fr_FR"), filterLine(""), "notify 6 0 0"}), takeNotes());
    EXPECT_EQ("fr_FR", client.mSetting.mLang);
    EXPECT_EQ(0U, client.mSetting.mVoice);
}

TEST_F(SetLanguage, StoresBothBeforeItTellsTheApplication) {
    static TTS::TTSClientPrivate* watched = nullptr;
    static bool stored = false;
    watched = &client;
    client.mCbFunc = [](unsigned, unsigned, unsigned) {
        stored = watched->mSetting.mLang == "fr_FR" && watched->mSetting.mVoice == 0;
    };
    set("fr_FR");
    EXPECT_TRUE(stored);
}

TEST_F(SetLanguage, MeansNoLanguageAndNoVoiceForACodeThatIsNoneOfOurs) {
    client.mSetting.mVoice = 1;
    EXPECT_EQ(0, set("de_DE"));
    EXPECT_EQ(Lines({trace("de_DE"), filterLine(""), "notify 6 0 0"}), takeNotes());
    EXPECT_EQ("de_DE", client.mSetting.mLang);
    EXPECT_EQ(65535U, client.mSetting.mVoice);
}

TEST_F(SetLanguage, DoesNothingForTheCodeThatIsSetAlready) {
    set("fr_FR");
    client.mSetting.mVoice = 1;
    takeNotes();
    EXPECT_EQ(0, set("fr_FR"));
    EXPECT_EQ(Lines({trace("fr_FR"), filterLine("")}), takeNotes());
    EXPECT_EQ(1U, client.mSetting.mVoice);
}

TEST_F(SetLanguage, ReturnsMinusNineForALanguageThatTheServiceDoesNotSpeak) {
    EXPECT_EQ(-9, set("es_ES"));
    EXPECT_EQ(Lines({trace("es_ES"), logged(1, "setLanguage: %s, %d, not support \n",
                                            "setLanguage: es_ES, 2, not support \n")}),
              takeNotes());
    EXPECT_EQ("na_NL", client.mSetting.mLang);
}

TEST_F(SetLanguage, ReturnsMinusNineWhenTheFilterTakesItAwayAndSaysSoWithABlank) {
    INI_LANGUAGE_WITH_VOICES = "fr_FR.none";
    EXPECT_EQ(-9, set("fr_FR"));
    EXPECT_EQ(Lines({trace("fr_FR"), filterLine("fr_FR.none"), takenAwayLine("fr_FR"),
                     logged(1, "setLanguage: %s, %d, not support because of filter \n",
                            "setLanguage: fr_FR, 1, not support because of filter \n")}),
              takeNotes());
    EXPECT_EQ("na_NL", client.mSetting.mLang);
}

TEST_F(SetLanguage, MayBeRefusedByTheFilterAlsoForACodeThatIsNoneOfOurs) {
    INI_LANGUAGE_WITH_VOICES = "xx_XX.none";
    EXPECT_EQ(-9, set("de_DE"));
    EXPECT_EQ(logged(1, "setLanguage: %s, %d, not support because of filter \n",
                     "setLanguage: de_DE, 5, not support because of filter \n"),
              takeNotes().back());
}

TEST_F(SetLanguage, RefusesTheSetLanguageTooOnceItIsNotSpoken) {
    client.mSetting.mLang = "es_ES";
    EXPECT_EQ(-9, set("es_ES"));
}

TEST_F(SetLanguage, NeedsNoConnection) {
    const TTS::TTSClientPrivate other("other", nullptr);
    EXPECT_EQ(-5, client.lock());
    EXPECT_EQ(0, set("fr_FR"));
    EXPECT_EQ(0, set("na_NL"));
    EXPECT_EQ(65535U, client.mSetting.mVoice);
}

TEST_F(SetLanguage, WorksForAnApplicationWithoutAFunction) {
    client.mCbFunc = nullptr;
    EXPECT_EQ(0, set("fr_FR"));
    EXPECT_EQ("fr_FR", client.mSetting.mLang);
}

TEST_F(SetLanguage, RefusesANullAddressWithoutAWord) {
    EXPECT_EQ(-3, client.setLanguage(nullptr));
    EXPECT_EQ(Lines{}, takeNotes());
}

TEST_F(SetLanguage, MayBeCalledAgainByTheApplicationsFunction) {
    static TTS::TTSClientPrivate* watched = nullptr;
    watched = &client;
    client.mCbFunc = [](unsigned a, unsigned b, unsigned c) {
        support::notified(a, b, c);
        if (watched->mSetting.mLang == "fr_FR") {
            char next[] = "en_US";
            watched->setLanguage(next);
        }
    };
    EXPECT_EQ(0, set("fr_FR"));
    EXPECT_EQ("en_US", client.mSetting.mLang);
    const Lines notes = takeNotes();
    EXPECT_EQ(2, std::count(notes.begin(), notes.end(), "notify 6 0 0"));
}

class TheLengthOfTheLanguage : public support::ClientTest {};

TEST_F(TheLengthOfTheLanguage, IsThatOfTheCode) {
    EXPECT_EQ(5, client.getLangPropertyLen());
    client.mSetting.mLang = "abcdefgh";
    EXPECT_EQ(8, client.getLangPropertyLen());
    EXPECT_EQ(Lines{}, takeNotes());
}

TEST_F(TheLengthOfTheLanguage, IsZeroAndLoggedForAnEmptyCode) {
    client.mSetting.mLang.clear();
    EXPECT_EQ(0, client.getLangPropertyLen());
    EXPECT_EQ(Lines{logged(1, "get language length: string object is empty\n",
                           "get language length: string object is empty\n")},
              takeNotes());
}

}  // namespace
