// SPDX-License-Identifier: Apache-2.0
#include "service/MarkupReader.h"

#include <gtest/gtest.h>

#include <ctime>
#include <ostream>
#include <tuple>

#include "service/Text.h"
#include "tests/service/Fakes.h"

namespace voxtreld {
namespace {

std::vector<MarkupPiece> piecesOf(const std::string& text) {
    std::vector<MarkupPiece> pieces;
    MarkupReader reader(text, Prosody(), ScriptedEngine().voices());
    for (MarkupPiece piece; reader.next(piece);) {
        pieces.push_back(piece);
    }
    return pieces;
}

/// What an engine is given of a text: "language.voice document", with "..." behind a document whose
/// pause follows, and "+MS" for the silence behind it.
std::vector<std::string> spoken(const std::string& text) {
    std::vector<std::string> lines;
    for (const MarkupPiece& piece : piecesOf(text)) {
        EXPECT_TRUE(piece.prosody.markup);
        std::string line;
        if (piece.hasText()) {
            line = std::to_string(piece.prosody.language) + "." +
                   std::to_string(piece.prosody.voice) + " " + piece.document() +
                   (piece.prosody.endPause ? "..." : "");
        }
        if (piece.pauseMs != 0) {
            line += "+" + std::to_string(piece.pauseMs);
        }
        if (!line.empty()) {
            lines.push_back(line);
        }
    }
    return lines;
}

TEST(Markup, BeginsWithTheSpeakTag) {
    for (const char* text : {"<speak>", "<speak >", "<speak/>", "<speak\nxml:lang='fr'>x"}) {
        EXPECT_TRUE(isMarkup(text)) << text;
    }
    for (const char* text :
         {"", "speak", "<speak", "<speaker>", "<SPEAK>", " <speak>", "<p>", "a <speak>"}) {
        EXPECT_FALSE(isMarkup(text)) << text;
    }
}

struct Read {
    const char* text;
    std::vector<std::string> spoken;
};

TEST(MarkupForTheEngine, HoldsTheKnownElementsWithTheirKnownAttributes) {
    const Read kTexts[] = {
        {"<speak>Hi.</speak>", {"0.1 <speak>Hi.</speak>..."}},
        {"<speak>a <prosody rate='slow' pitch=\"+10%\">b</prosody> c</speak>",
         {"0.1 <speak>a <prosody rate=\"slow\" pitch=\"+10%\">b</prosody> c</speak>..."}},
        {"<speak><emphasis level='strong'>a</emphasis></speak>",
         {"0.1 <speak><emphasis level=\"strong\">a</emphasis></speak>..."}},
        {"<speak><say-as interpret-as='spell-out'>ab</say-as></speak>",
         {"0.1 <speak><say-as interpret-as=\"characters\">ab</say-as></speak>..."}},
        {"<speak>a &amp; b &#60;</speak>", {"0.1 <speak>a &amp; b &lt;</speak>..."}},
        {"<speak>a < b &x; c</speak>", {"0.1 <speak>a &lt; b &amp;x; c</speak>..."}},
        {"<speak><![CDATA[<p>]]></speak>", {"0.1 <speak>&lt;p&gt;</speak>..."}},
        {"<speak><sub alias='R &amp; D'>RD</sub> x</speak>", {"0.1 <speak>R &amp; D x</speak>..."}},
        {"<speak>a<metadata>b<p>c</p></metadata>d<desc>e</desc></speak>",
         {"0.1 <speak>ad</speak>..."}},
        {"<speak><p>One</p><p><s>Two.</s> Three</p></speak>",
         {"0.1 <speak>One</speak>...", "0.1 <speak>Two.</speak>...",
          "0.1 <speak> Three</speak>..."}},
    };
    for (const Read& each : kTexts) {
        EXPECT_EQ(each.spoken, spoken(each.text)) << each.text;
    }
}

TEST(MarkupForTheEngine, HoldsNothingThatAnEngineWouldOpenOrCannotTake) {
    const Read kTexts[] = {
        {"<speak><audio src='/etc/passwd'>a</audio></speak>", {"0.1 <speak>a</speak>..."}},
        {"<speak><audio src='x; rm'/>a</speak>", {"0.1 <speak>a</speak>..."}},
        {"<speak xml:base='http://x/'>a<voice name='../../../etc/passwd'>b</voice></speak>",
         {"0.1 <speak>ab</speak>..."}},
        {"<speak><prosody rate='99999%' pitch='a b' volume='&lt;' range=''>a</prosody></speak>",
         {"0.1 <speak><prosody>a</prosody></speak>..."}},
        {"<speak><prosody rate='aaaaaaaaaaaaaaaaaaaaaaaaa' pitch='aaaaaaaaaaaaaaaaaaaaaaaa'>a",
         {"0.1 <speak><prosody pitch=\"aaaaaaaaaaaaaaaaaaaaaaaa\">a</prosody></speak>..."}},
        {"<speak><say-as interpret-as='tts:key'>a</say-as></speak>",
         {"0.1 <speak><say-as>a</say-as></speak>..."}},
        {"<speak><tts:style field='x' mode='y'>a</tts:style></speak>", {"0.1 <speak>a</speak>..."}},
        {"<speak>a\x01\x02z</speak>", {"0.1 <speak>a  z</speak>..."}},
    };
    for (const Read& each : kTexts) {
        EXPECT_EQ(each.spoken, spoken(each.text)) << each.text;
    }
}

TEST(MarkupForTheEngine, IsBalancedWhateverTheTextIs) {
    const Read kTexts[] = {
        {"<speak>a<prosody rate='slow'>b",
         {"0.1 <speak>a<prosody rate=\"slow\">b</prosody></speak>..."}},
        {"<speak>a</prosody>b</speak>", {"0.1 <speak>ab</speak>..."}},
        {"<speak><prosody><emphasis>a</prosody>b</emphasis>c</speak>",
         {"0.1 <speak><prosody><emphasis>a</emphasis></prosody>bc</speak>..."}},
        {"<speak/>a</speak>b</speak>c",
         {"0.1 <speak>a</speak>...", "0.1 <speak>b</speak>...", "0.1 <speak>c</speak>..."}},
    };
    for (const Read& each : kTexts) {
        EXPECT_EQ(each.spoken, spoken(each.text)) << each.text;
    }
}

TEST(MarkupForTheEngine, IsInOneVoice) {
    const Read kTexts[] = {
        {"<speak>a <lang xml:lang='fr'>b</lang> c</speak>",
         {"0.1 <speak>a </speak>", "1.1 <speak>b</speak>", "0.1 <speak> c</speak>..."}},
        {"<speak>A. <lang xml:lang='FR-ca'>B.</lang> c</speak>",
         {"0.1 <speak>A. </speak>...", "1.1 <speak>B.</speak>...", "0.1 <speak> c</speak>..."}},
        {"<speak xml:lang='ko_KR'>a</speak>", {"3.1 <speak>a</speak>..."}},
        {"<speak xml:lang='en-GB'>a<p xml:lang='pt'>b</p></speak>",
         {"0.1 <speak>a</speak>...", "4.1 <speak>b</speak>..."}},
        {"<speak xml:lang='de'>a<voice xml:lang='xx' name='none' variant='9'>b</voice></speak>",
         {"0.1 <speak>ab</speak>..."}},
        {"<speak><voice name='two'>a</voice>b</speak>",
         {"0.2 <speak>a</speak>", "0.1 <speak>b</speak>..."}},
        {"<speak><voice variant='2'>a<voice name='un'>b</voice>c</voice></speak>",
         {"0.2 <speak>a</speak>", "1.1 <speak>b</speak>", "0.2 <speak>c</speak>..."}},
        {"<speak><prosody rate='fast'>a <voice name='uno'>b</voice></prosody></speak>",
         {"0.1 <speak><prosody rate=\"fast\">a </prosody></speak>",
          "2.1 <speak><prosody rate=\"fast\">b</prosody></speak>..."}},
    };
    for (const Read& each : kTexts) {
        EXPECT_EQ(each.spoken, spoken(each.text)) << each.text;
    }
}

TEST(ABreak, IsSilenceInMilliseconds) {
    const Read kTexts[] = {
        {"<speak>a<break time='1s'/>b</speak>",
         {"0.1 <speak>a</speak>+1000", "0.1 <speak>b</speak>..."}},
        {"<speak>a<break time='250ms'></break>b</speak>",
         {"0.1 <speak>a</speak>+250", "0.1 <speak>b</speak>..."}},
        {"<speak><break time='1.5s'/></speak>", {"+1500"}},
        {"<speak><break/><break strength='weak'/><break strength='x-strong'/></speak>",
         {"+300", "+150", "+1200"}},
        {"<speak>a<break strength='none'/><break time='0s'/>b</speak>",
         {"0.1 <speak>ab</speak>..."}},
        {"<speak><break time='-5s'/><break time='nan s'/><break time='1e3s'/></speak>",
         {"+300", "+300", "+300"}},
        {"<speak><break time='100s'/></speak>", {"+60000"}},
    };
    for (const Read& each : kTexts) {
        EXPECT_EQ(each.spoken, spoken(each.text)) << each.text;
    }
}

TEST(ABreak, IsNoneInWhatIsNotSpoken) {
    EXPECT_EQ((std::vector<std::string>{"0.1 <speak>abc</speak>..."}),
              spoken("<speak>a<metadata>x<break time='5s'/></metadata>"
                     "<sub alias='b'>x<break/></sub>c</speak>"));
}

TEST(ABreak, IsOverWhenThoseOfTheTextAreTenMinutes) {
    for (const char* each :
         {"<break time='9999999s'/>", "<break/>", "<break strength='strong'/>"}) {
        std::string text = "<speak>";
        for (int n = 0; n < 3000; ++n) {
            text += each;
        }
        uint64_t total = 0;
        for (const MarkupPiece& piece : piecesOf(text)) {
            total += piece.pauseMs;
        }
        EXPECT_EQ(600'000U, total) << each;
    }
}

/// Every character of the documents that stands in the text as well must be found there.
void expectSentOffsets(const std::string& text, const std::string& letters) {
    for (const MarkupPiece& piece : piecesOf(text)) {
        for (const char letter : letters) {
            const std::string& document = piece.document();
            const size_t at = document.find(letter);
            if (at != std::string::npos) {
                EXPECT_EQ(characterCount(text.substr(0, text.find(letter))),
                          piece.sentOffset(characterCount(document.substr(0, at))))
                    << letter << " of " << text;
            }
        }
    }
}

TEST(AnOffset, IsThatOfTheSameCharacterInTheSentText) {
    expectSentOffsets("<speak>A B C</speak>", "ABC");
    expectSentOffsets("<speak>\xC3\xA9 A <prosody rate=\"slow\">B \xC3\xA9</prosody> C</speak>",
                      "ABC");
    expectSentOffsets("<speak>A &amp; B &#233; C &x; D < E</speak>", "ABCDE");
    expectSentOffsets("<speak><!-- \xEC\x95\x88 -->A<break time='1s'/>B</speak>", "AB");
    expectSentOffsets("<speak>A<voice name='\xC3\xA9'/>B<lang xml:lang='fr'>C</lang>D</speak>",
                      "ABCD");
    expectSentOffsets("<speak>A <![CDATA[B <E> & ]]>F <metadata>x</metadata>G</speak>", "ABEFG");
}

TEST(AnOffset, OfASubstituteIsThatOfTheTextItStandsFor) {
    const std::string text = "<speak>a <sub alias=\"Bee Cee\">bc</sub> d</speak>";
    const MarkupPiece piece = piecesOf(text).front();
    EXPECT_EQ(text.find("bc"), piece.sentOffset(piece.document().find("Bee")));
    EXPECT_EQ(text.find("bc"), piece.sentOffset(piece.document().find("Cee")));
    EXPECT_EQ(text.find(" d"), piece.sentOffset(piece.document().find(" d")));
}

TEST(AnOffset, LiesInTheTextAlsoBehindAllThatIsSpoken) {
    for (const std::string text :
         {"<speak>a</speak>", "<speak>a<![CDATA[b]]>", "<speak>a<metadata><![CDATA[b]]>"}) {
        const MarkupPiece piece = piecesOf(text).front();
        EXPECT_EQ(characterCount(text), piece.sentOffset(piece.document().size() - 1)) << text;
    }
}

TEST(AMark, StandsBeforeTheTextBehindItAndIsCounted) {
    const auto pieces = piecesOf(
        "<speak><mark name='x'/>One <mark name='x'/>two<break/><mark></mark>&amp;"
        "<metadata><mark name='in'/></metadata></speak>");
    ASSERT_EQ(2U, pieces.size());
    ASSERT_EQ(2U, pieces[0].marks().size());
    EXPECT_EQ(1U, pieces[0].marks()[0].number);
    EXPECT_EQ(pieces[0].document().find("One"), pieces[0].marks()[0].offset);
    EXPECT_EQ(2U, pieces[0].marks()[1].number);
    EXPECT_EQ(pieces[0].document().find("two"), pieces[0].marks()[1].offset);
    ASSERT_EQ(2U, pieces[1].marks().size());
    EXPECT_EQ(3U, pieces[1].marks()[0].number);
    EXPECT_EQ(pieces[1].document().find('&'), pieces[1].marks()[0].offset);
    EXPECT_EQ(4U, pieces[1].marks()[1].number);
}

std::string repeated(const std::string& text, size_t times) {
    std::string all;
    all.reserve(text.size() * times);
    for (size_t n = 0; n < times; ++n) {
        all += text;
    }
    return all;
}

TEST(ALongMarkedUpText, IsCutAtSentencesWithItsElementsOpenedAgain) {
    const std::string sentence = "It rains <emphasis>very</emphasis> much today. ";
    const auto pieces =
        piecesOf("<speak><prosody rate='slow'>" + repeated(sentence, 500) + "</prosody></speak>");
    EXPECT_GT(pieces.size(), 5U);
    std::string together;
    const std::string begin = "<speak><prosody rate=\"slow\">";
    const std::string end = "</prosody></speak>";
    for (size_t n = 0; n + 1 < pieces.size(); ++n) {
        const std::string& document = pieces[n].document();
        ASSERT_EQ(0U, document.rfind(begin, 0)) << document;
        ASSERT_EQ(document.size() - end.size(), document.rfind(end)) << document;
        EXPECT_LT(document.size(), 2048U);
        EXPECT_TRUE(pieces[n].endsSentence()) << document;
        together += document.substr(begin.size(), document.size() - begin.size() - end.size());
    }
    EXPECT_EQ(0U, repeated(sentence, 500).rfind(together, 0));
}

struct Hostile {
    const char* what;
    std::string text;
};

TEST(HostileMarkup, BecomesPiecesOfBoundedSize) {
    constexpr size_t kMega = 1U << 20U;
    const Hostile kTexts[] = {
        {"nested", "<speak>" + repeated("<prosody rate='fast'>", 100'000) + "x" +
                       repeated("</prosody>", 100'000)},
        {"nested voices", "<speak>" + repeated("<voice variant='2'>", 100'000) + "x"},
        {"marks", "<speak>" + repeated("<mark name='m'/>", 1'000'000) + "x"},
        {"huge attribute", "<speak><prosody rate='" + repeated("9", kMega) + "'>x"},
        {"huge alias", "<speak><sub alias='" + repeated("a", kMega) + "'>x</sub>"},
        {"huge name", "<speak><" + repeated("p", kMega) + ">x"},
        {"many attributes", "<speak><prosody" + repeated(" a='b'", kMega / 6) + ">x"},
        {"angles", "<speak>" + repeated("<", kMega)},
        {"ampersands", "<speak>" + repeated("&", kMega)},
        {"open quotes", "<speak>" + repeated("<p a='", kMega / 6)},
        {"open comments", "<speak>" + repeated("<!--", kMega / 4)},
        {"one word", "<speak>" + repeated("x", kMega)},
        {"closing tags", "<speak>" + repeated("</prosody>", kMega / 10)},
        {"changing voices", "<speak>" + repeated("<lang xml:lang='fr'>x</lang>y", 20'000)},
        {"empty elements", "<speak>x" + repeated("<emphasis></emphasis>", 50'000)},
        {"a section of ampersands", "<speak><![CDATA[" + repeated("&", kMega) + "]]>"},
    };
    for (const Hostile& each : kTexts) {
        MarkupReader reader(each.text, Prosody(), ScriptedEngine().voices());
        size_t marks = 0;
        for (MarkupPiece piece; reader.next(piece);) {
            ASSERT_LT(piece.document().size(), 8192U) << each.what;
            marks += piece.marks().size();
        }
        EXPECT_LE(marks, 10'000U) << each.what;
    }
}

double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

TEST(HostileMarkup, IsReadInOnePassThoughItsTagsFillHalfOfEachPiece) {
    std::string tag = "<prosody";
    for (const char* name : {" rate", " pitch", " range", " volume", " level"}) {
        tag += name + ("='" + std::string(24, 'a') + "'");
    }
    const std::string text = "<speak>" + repeated(tag + ">", 8) + repeated("word ", 1U << 19U);
    const double begun = processorSeconds();
    MarkupReader reader(text, Prosody(), ScriptedEngine().voices());
    for (MarkupPiece piece; reader.next(piece);) {
    }
    EXPECT_LT(processorSeconds() - begun, 30) << "its rest was looked through for each piece";
}

TEST(HostileMarkup, IsNoDeeperThanAnEngineTakes) {
    const auto pieces = piecesOf("<speak>" + repeated("<prosody rate='90%'>", 50) + "deep" +
                                 repeated("</prosody>", 50) + "flat</speak>");
    ASSERT_EQ(1U, pieces.size());
    const std::string& document = pieces[0].document();
    const size_t deep = document.find("deep");
    size_t depth = 0;
    for (size_t at = 0; (at = document.find("<prosody", at)) < deep; ++at) {
        ++depth;
    }
    EXPECT_EQ(MarkupReader::kDeepest - 1, depth);  // `speak` is the first
    EXPECT_LT(document.rfind("</prosody>"), document.find("flat"));
}

}  // namespace
}  // namespace voxtreld
