// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Markup.h"

#include <gtest/gtest.h>

namespace {

using namespace sd_voxtrel;
using Names = std::vector<std::string>;

TEST(AMarkedUpText, BeginsWithTheTagSpeak) {
    for (const char* text : {"<speak>", "<speak >", "<speak\n>", "<speak/>"}) {
        EXPECT_TRUE(isMarkedUp(text)) << text;
    }
    for (const char* text : {"", "speak", " <speak>", "<speaker>", "<speak", "<Speak>"}) {
        EXPECT_FALSE(isMarkedUp(text)) << text;
    }
}

TEST(AMarkedUpText, MayHaveAPrologInFront) {
    EXPECT_EQ("<speak>a</speak>",
              withoutProlog("\xEF\xBB\xBF <?xml version=\"1.0\"?>\n<!-- <speak> -->"
                            "<!DOCTYPE speak [<!ENTITY a \">\">]>\n<speak>a</speak>"));
    EXPECT_EQ(" a <speak>", withoutProlog(" a <speak>"));
    EXPECT_EQ("<!-- a", withoutProlog("<!-- a"));
    EXPECT_EQ("", withoutProlog(""));
}

TEST(Marks, AreCountedAsTheyAppear) {
    EXPECT_EQ((Names{"__spd_0", "b", "c"}),
              markNames("<speak><mark name=\"__spd_0\"/>a<mark\n name = 'b' ></mark>"
                        "<mark x=\"name='z'\" name=\"c\"/></speak>"));
}

TEST(Marks, AreNoneInCommentsAndCharacterData) {
    EXPECT_EQ((Names{"b"}), markNames("<speak><!-- <mark name='a'/> --><![CDATA[<mark name='a'/>]]>"
                                      "<?x <mark name='a'/> ?><mark name='b'/><marker name='a'/>"));
}

TEST(Marks, MayHaveNoName) {
    EXPECT_EQ((Names{"", "", "b"}),
              markNames("<speak><mark/><mark nickname='a'/><mark name='b'/>"));
}

TEST(Marks, HaveNoNameFromTheValueOfAnotherAttribute) {
    EXPECT_EQ((Names{"c", "", "d"}),
              markNames("<mark x=\"a name='z'\" name=\"c\"/><mark x=\" name='z'\"/>"
                        "<mark a='b'\tname =\n'd'/>"));
}

TEST(Marks, HaveNamesOnOneLine) {
    EXPECT_EQ((Names{"a&<\" b"}), markNames("<mark name='a&amp;&#60;&quot;\nb'/>"));
}

TEST(Marks, AreCountedInBrokenTextsAsServicesDo) {
    EXPECT_EQ((Names{}), markNames("<mark name='a"));
    EXPECT_EQ((Names{}), markNames("<mark name="));
    EXPECT_EQ((Names{""}), markNames("<mark name=>"));
    EXPECT_EQ((Names{""}), markNames("<mark name>"));
    EXPECT_EQ((Names{}), markNames("<"));
    EXPECT_EQ((Names{}), markNames("</>&"));
    EXPECT_EQ((Names{"b"}), markNames("<p title='1<2'><mark name='a<b'/><mark name='b'/></p>"));
    EXPECT_EQ((Names{"b"}), markNames("<p title='<mark name='b'/></p>"));
    EXPECT_EQ((Names{"b"}), markNames("<mark/ name='a'><mark name='b'></mark>"));
}

TEST(Marks, OfATextFullOfBrokenTagsAreFoundInTime) {
    std::string text = "<speak>";
    while (text.size() < 1'000'000) {
        text += "<a";
    }
    EXPECT_EQ((Names{}), markNames(text));
    EXPECT_EQ((Names{"b"}), markNames(text + "<mark name='b'/>"));
}

TEST(TheTextOfAMarkedUpText, ThatIsFullOfBrokenReferencesIsFoundInTime) {
    std::string text;
    while (text.size() < 1'000'000) {
        text += "&a";
    }
    EXPECT_EQ(text, withoutMarkup(text));
    const std::string one = "&" + std::string(1'000'000, 'a');
    EXPECT_EQ(one, withoutMarkup(one));
}

TEST(TheTextOfAMarkedUpText, IsWhatIsHeard) {
    EXPECT_EQ("a & b < c\xC3\xA9",
              withoutMarkup("<speak>a <mark name='x'/>&amp; <b>b</b> <![CDATA[<]]> c&#233;</speak>")
                  .substr(0, 11));
    EXPECT_EQ("One. Two", withoutMarkup("<s>One.</s><s>Two</s>").substr(0, 8));
    EXPECT_EQ("a < b &x; & <", withoutMarkup("a < b &x; & <"));
    EXPECT_EQ("A", withoutMarkup("&#00000000000000000065;"));
    EXPECT_EQ("", withoutMarkup("<speak></speak>"));
}

TEST(PlainText, IsEscaped) {
    EXPECT_EQ("&lt;a&gt; &amp;&apos;&quot;", escaped("<a> &'\""));
}

TEST(ASpelledText, IsReadCharacterByCharacter) {
    EXPECT_EQ("<speak x=\">\"><say-as interpret-as=\"characters\">a</say-as></speak>",
              spelled("<speak x=\">\">a</speak>"));
    EXPECT_EQ("<speak><say-as interpret-as=\"characters\">a</say-as>", spelled("<speak>a"));
    EXPECT_EQ("a \xC3\xA9 b", spelled("a\xC3\xA9"
                                      "b"));
    EXPECT_EQ("", spelled(""));
}

TEST(ARepairedText, IsUtf8WithoutANul) {
    EXPECT_EQ(
        "a\xEF\xBF\xBD"
        "b",
        repaired(std::string("a\0b", 3)));
    EXPECT_EQ("\xEF\xBF\xBDx\xF0\x9F\x99\x82", repaired("\xE9x\xF0\x9F\x99\x82"));
    EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD", repaired("\xC0\x80"));
    EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD", repaired("\xED\xA0\x80"));
    EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD", repaired("\xE2\x82"));
}

}  // namespace
