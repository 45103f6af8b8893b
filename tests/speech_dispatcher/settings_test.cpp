// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "bridges/speech-dispatcher/Config.h"
#include "bridges/speech-dispatcher/Prosody.h"
#include "bridges/speech-dispatcher/Wishes.h"

namespace {

using namespace sd_voxtrel;

const std::vector<ListedVoice> kVoices = {{"en-us", "en-US", "none"},
                                          {"en-us+f1", "en-US", "f1"},
                                          {"fr-fr", "fr-FR", "none"},
                                          {"fr-fr+f1", "fr-FR", "f1"}};

std::vector<std::string> names(const std::string& language, const std::string& variant) {
    std::vector<std::string> all;
    for (const ListedVoice& voice : chosen(kVoices, language, variant)) {
        all.push_back(voice.name);
    }
    return all;
}

using Names = std::vector<std::string>;

TEST(Voices, AreChosenByLanguageAndVariant) {
    EXPECT_EQ(4U, names("", "").size());
    EXPECT_EQ((Names{"fr-fr", "fr-fr+f1"}), names("fr-FR", ""));
    EXPECT_EQ((Names{"fr-fr", "fr-fr+f1"}), names("FR_fr", ""));
    EXPECT_EQ((Names{"en-us", "en-us+f1"}), names("en-GB", "")) << "the nearest";
    EXPECT_EQ((Names{"en-us+f1"}), names("en", "F1"));
    EXPECT_EQ((Names{"en-us+f1", "fr-fr+f1"}), names("", "f1"));
    EXPECT_EQ((Names{}), names("de", ""));
}

TEST(AScale, HasTheServicesOwnValueAtZero) {
    const Scale scale{80, 900, 300};
    EXPECT_EQ(300, scale.at(0));
    EXPECT_EQ(900, scale.at(100));
    EXPECT_EQ(80, scale.at(-100));
    EXPECT_EQ(600, scale.at(50));
    EXPECT_EQ(190, scale.at(-50));
    EXPECT_EQ(900, scale.at(2000)) << "no further";
}

TEST(AScale, IsOfItsMiddleWhereTheOwnValueIsNotKnown) {
    EXPECT_EQ(150, (Scale{100, 200, std::nullopt}.at(0)));
    EXPECT_EQ(200, (Scale{100, 200, 1000}.at(-0))) << "within the range";
}

class TheWishes : public ::testing::Test {
protected:
    Style styleWith(const Values& values) {
        wishes.take(values);
        return wishes.style();
    }
    Wishes wishes{Config().voiceTypes};
};

TEST_F(TheWishes, AreAtFirstForAllAsTheServiceHasIt) {
    const Style style = styleWith({});
    EXPECT_FALSE(style.language);
    EXPECT_FALSE(style.voice);
    EXPECT_EQ(0, style.rate);
    EXPECT_EQ(0, style.pitch);
    EXPECT_EQ(0, style.volume);
    EXPECT_FALSE(style.isMute);
}

TEST_F(TheWishes, HoldUntilTheyAreChanged) {
    styleWith({{"rate", "20"}, {"pitch", "-30"}, {"volume", "100"}, {"language", "fr-FR"}});
    const Style style = styleWith({{"rate", "21"}});
    EXPECT_EQ(21, style.rate);
    EXPECT_EQ(-30, style.pitch);
    EXPECT_EQ(100, style.volume);
    EXPECT_EQ("fr-FR", style.language);
    EXPECT_FALSE(styleWith({{"language", "NULL"}}).language);
}

TEST_F(TheWishes, TakeNoValueThatIsNone) {
    styleWith({{"rate", "20"}});
    for (const char* value : {"", "NULL", "x", "1x", "1.5", "99999999999"}) {
        EXPECT_EQ(20, styleWith({{"rate", value}}).rate) << value;
    }
    EXPECT_EQ(-100, styleWith({{"rate", "-4000"}}).rate);
    EXPECT_EQ(-100, styleWith({{"rato", "5"}}).rate);
}

TEST_F(TheWishes, MakeTypesOfVoicesNumbersInTheLanguage) {
    EXPECT_EQ("2", styleWith({{"voice", "female1"}, {"language", "fr"}}).voice);
    EXPECT_EQ("8", styleWith({{"voice", "male2"}}).voice);
    EXPECT_FALSE(styleWith({{"voice", "male1"}}).voice) << "the service's own";
    EXPECT_FALSE(styleWith({{"voice", "robot"}}).voice);
}

TEST_F(TheWishes, PreferAVoiceByNameToAType) {
    const Style style =
        styleWith({{"language", "en-US"}, {"voice", "female1"}, {"synthesis_voice", "en-us+f1"}});
    EXPECT_EQ("en-us+f1", style.voice);
    EXPECT_EQ("en-US", style.language);
    EXPECT_EQ("2", styleWith({{"synthesis_voice", "NULL"}}).voice);
}

TEST_F(TheWishes, KnowSpellingAndPunctuation) {
    EXPECT_FALSE(wishes.isSpelled());
    EXPECT_FALSE(wishes.wantsPunctuation());
    wishes.take({{"spelling_mode", "on"}, {"punctuation_mode", "most"}});
    EXPECT_TRUE(wishes.isSpelled());
    EXPECT_TRUE(wishes.wantsPunctuation());
    wishes.take({{"spelling_mode", "off"}, {"punctuation_mode", "some"}});
    EXPECT_FALSE(wishes.isSpelled());
    EXPECT_FALSE(wishes.wantsPunctuation());
    wishes.take({{"punctuation_mode", "all"}});
    EXPECT_TRUE(wishes.wantsPunctuation());
}

TEST(AStyle, GivesUpTheVoiceThenTheLanguageThenTheNumbers) {
    Style style;
    style.language = "de";
    style.voice = "7";
    style.pitch = 3;
    EXPECT_TRUE(style.relax());
    EXPECT_FALSE(style.voice);
    EXPECT_TRUE(style.language);
    EXPECT_TRUE(style.relax());
    EXPECT_FALSE(style.language);
    EXPECT_EQ(3, style.pitch);
    EXPECT_TRUE(style.relax());
    EXPECT_EQ(0, style.pitch);
    EXPECT_FALSE(style.relax());
}

TEST(AStyle, TakesAVoiceByItsNameInAnyLanguageBeforeItGivesItUp) {
    Style style;
    style.language = "fr";
    style.voice = "en-us+f1";
    EXPECT_TRUE(style.relax());
    EXPECT_EQ("en-us+f1", style.voice);
    EXPECT_FALSE(style.language);
    EXPECT_TRUE(style.relax());
    EXPECT_FALSE(style.voice);
    EXPECT_EQ("fr", style.language);
    EXPECT_TRUE(style.relax());
    EXPECT_FALSE(style.language);
    EXPECT_FALSE(style.relax());
}

Config read(const std::string& text, std::vector<std::string>& complaints) {
    return readConfig(text, [&](const std::string& what) { complaints.push_back(what); });
}

TEST(TheConfig, IsReadLineByLine) {
    std::vector<std::string> complaints;
    const Config config = read(
        "# a comment\n\n Markup\t no # here\nPunctuationForEveryone yes\n"
        "WaitForService 500\r\nVoiceType female1 \"Anna B\"\n",
        complaints);
    EXPECT_TRUE(complaints.empty()) << complaints.front();
    EXPECT_EQ(MarkupPolicy::Never, config.markup);
    EXPECT_TRUE(config.punctuationForEveryone);
    EXPECT_EQ(500, config.timeout.count());
    EXPECT_EQ("Anna B", config.voiceTypes.at("female1"));
    EXPECT_EQ("8", config.voiceTypes.at("male2"));
}

TEST(TheConfig, NamesTheLinesThatItDoesNotUnderstand) {
    std::vector<std::string> complaints;
    const Config config = read(
        "Markup maybe\nWaitForService -1\nVoiceType robot 1\n"
        "Colour red\nMarkup\nPunctuationForEveryone 1\nMarkup \"\nMarkup yes",
        complaints);
    ASSERT_EQ(7U, complaints.size());
    EXPECT_EQ("line 1 is not understood: Markup maybe", complaints[0]);
    EXPECT_EQ(MarkupPolicy::Always, config.markup);
    EXPECT_EQ(3000, config.timeout.count());
}

TEST(TheConfig, IsDeliveredWithWhatHoldsAnyway) {
    std::ifstream file(VOXTREL_DESKTOP_CONFIG);
    std::ostringstream text;
    unsigned count = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.size() > 1 && line[0] == '#' && line[1] != ' ') {
            text << line.substr(1) << "\n";
            ++count;
        }
    }
    std::vector<std::string> complaints;
    const Config config = read(text.str(), complaints);
    EXPECT_TRUE(complaints.empty()) << complaints.front();
    EXPECT_EQ(10U, count);
    EXPECT_EQ(Config().markup, config.markup);
    EXPECT_EQ(Config().punctuationForEveryone, config.punctuationForEveryone);
    EXPECT_EQ(Config().timeout, config.timeout);
    EXPECT_EQ(Config().voiceTypes, config.voiceTypes);
}

}  // namespace
