// SPDX-License-Identifier: Apache-2.0
#include "tools/SsmlChecker.h"

#include <gtest/gtest.h>

#include <string>

using namespace voxtrelctl;

namespace {

TEST(GoodMarkup, HasNoMistake) {
    const char* const kTexts[] = {
        "<speak></speak>",
        "<speak/>",
        "<speak>Hello.</speak>\n<!-- end --> ",
        "<speak version=\"1.1\" xmlns='http://www.w3.org/2001/10/synthesis'\n "
        "xml:lang=\"fr\">a</speak >",
        "<speak>a<break time='1s' strength = \"weak\"/>b<mark name='m'></mark></speak>",
        "<speak><p><s>a</s></p><prosody rate='slow'><emphasis>b</emphasis></prosody></speak>",
        "<speak><voice name='x'><lang xml:lang='fr'>a</lang></voice></speak>",
        "<speak><say-as interpret-as='date'>1</say-as><sub alias='b &amp; c'>a</sub></speak>",
        "<speak><phoneme ph='a'>a</phoneme><token>a</token><w>b</w><lookup "
        "ref='x'>c</lookup></speak>",
        "<speak><meta name='a'/><metadata>a</metadata><lexicon "
        "uri='a'/><audio><desc>d</desc></audio></speak>",
        "<speak>&amp;&lt;&gt;&quot;&apos;&#233;&#xE9;&#x10FFFF;</speak>",
        "<speak>a > b ]]> 'c' \"d\"</speak>",
        "<speak><!-- <b> & --><?x <c> ?><![CDATA[<d> & ]]></speak>",
        "<speak><tts:style mode='all'/><x:any><speak>a</speak></x:any></speak>",
        "<speak>\xEC\x95\x88\xEB\x85\x95 \xC3\xA9<mark name='\xC3\xA9'/></speak>",
    };
    for (const char* text : kTexts) {
        const auto mistake = SsmlChecker(text).check();
        EXPECT_FALSE(mistake) << text << ": " << mistake->line << ":" << mistake->column << " "
                              << mistake->what;
    }
}

struct Mistaken {
    const char* text;
    const char* mistake;  ///< "line:column what"
};

std::string mistakeIn(const std::string& text) {
    const auto mistake = SsmlChecker(text).check();
    return mistake ? std::to_string(mistake->line) + ":" + std::to_string(mistake->column) + " " +
                         mistake->what
                   : "";
}

TEST(AMistake, IsNamedByItsPlace) {
    const char* const kBegin = "1:1 a marked-up text begins with <speak>, with nothing before it";
    const Mistaken kTexts[] = {
        {"", kBegin},
        {"Hello", kBegin},
        {" <speak>a</speak>", kBegin},
        {"<?xml version='1.0'?><speak>a</speak>", kBegin},
        {"<speaker>a</speaker>", kBegin},
        {"<p>a</p>", kBegin},
        {"<speak", "1:7 a tag is not closed by >"},
        {"<speak>", "1:8 </speak> is missing"},
        {"<speak>a<p>b", "1:13 </p> is missing"},
        {"<speak>a</p></speak>", "1:9 </p> where </speak> is due"},
        {"<speak><p>a</speak></p>", "1:12 </speak> where </p> is due"},
        {"<speak>a</speak></speak>", "1:17 </speak> where nothing is open"},
        {"<speak>a</speak> b", "1:18 text behind </speak>"},
        {"<speak/><p/>", "1:9 <p> behind </speak>"},
        {"<speak>a</speak><![CDATA[b]]>", "1:17 a bare <, which is written &lt;"},
        {"<speak>a</speak", "1:9 </speak is not closed by >"},
        {"<speak>a</ speak>", "1:9 </ is not closed by >"},
        {"<speak>a <brake/></speak>", "1:10 <brake> is no element of SSML"},
        {"<speak><Prosody>a</Prosody></speak>", "1:8 <Prosody> is no element of SSML"},
        {"<speak>a < b</speak>", "1:10 a bare <, which is written &lt;"},
        {"<speak>a <3</speak>", "1:10 a bare <, which is written &lt;"},
        {"<speak><p <s>a</s></p></speak>", "1:11 a tag is not closed by >"},
        {"<speak><break time=1s/></speak>", "1:20 the value of time is not quoted"},
        {"<speak><break time/></speak>", "1:15 time has no value"},
        {"<speak><break ='1s'/></speak>", "1:15 an attribute without a name"},
        {"<speak><break time='1s/></speak>", "1:20 a quote is not closed"},
        {"<speak><break time=\"1s", "1:20 a quote is not closed"},
        {"<speak><break a='1'b='2'/></speak>", "1:20 a blank is missing before an attribute"},
        {"<speak><break a='1' b='2' a='3'/></speak>", "1:27 a is given twice"},
        {"<speak>fish & chips</speak>", "1:13 a bare &, which is written &amp;"},
        {"<speak>AT&T</speak>", "1:10 a bare &, which is written &amp;"},
        {"<speak>a&nbsp;b</speak>", "1:9 &nbsp; is not known"},
        {"<speak>&;</speak>", "1:8 &; is not known"},
        {"<speak>&#;</speak>", "1:8 &#; is not known"},
        {"<speak>&#0;</speak>", "1:8 &#0; is not known"},
        {"<speak>&#xD800;</speak>", "1:8 &#xD800; is not known"},
        {"<speak>&#x110000;</speak>", "1:8 &#x110000; is not known"},
        {"<speak>&#12a;</speak>", "1:8 &#12a; is not known"},
        {"<speak><sub alias='a & b'>c</sub></speak>", "1:22 a bare &, which is written &amp;"},
        {"<speak><!-- a</speak>", "1:8 a comment that does not end with -->"},
        {"<speak><!--></speak>", "1:8 a comment that does not end with -->"},
        {"<speak><!---></speak>", "1:8 a comment that does not end with -->"},
        {"<speak><![CDATA[a</speak>", "1:8 a CDATA section that does not end with ]]>"},
        {"<speak><?a</speak>", "1:8 an instruction that does not end with ?>"},
        {"<speak><!DOCTYPE x>a</speak>", "1:8 a bare <, which is written &lt;"},
        {"<speak>a\x01</speak>", "1:9 a control character"},
        {"<speak>one\ntwo\n  <p>three</s>\n</speak>", "3:11 </s> where </p> is due"},
        {"<speak>\xC3\xA9\xEC\x95\x88 <b/></speak>", "1:11 <b> is no element of SSML"},
        {"<speak>\r\n\xC3\xA9&</speak>", "2:2 a bare &, which is written &amp;"},
    };
    for (const Mistaken& each : kTexts) {
        EXPECT_EQ(each.mistake, mistakeIn(each.text)) << each.text;
    }
}

TEST(AMistake, ThatIsANulIsFound) {
    EXPECT_EQ("1:9 a control character", mistakeIn(std::string("<speak>a\0b</speak>", 18)));
}

TEST(AMistake, WithALongNameIsShownShort) {
    const std::string name(1000, 'x');
    EXPECT_EQ("1:8 <" + name.substr(0, 40) + "...> is no element of SSML",
              mistakeIn("<speak><" + name + "/></speak>"));
}

TEST(LargeMarkup, IsCheckedInOnePass) {
    const size_t kCount = 200'000;
    std::string nested = "<speak>";
    std::string ends;
    std::string attributes = "<speak";
    for (size_t n = 0; n < kCount; ++n) {
        nested += "<p>";
        ends += "</p>";
        attributes += " a" + std::to_string(n) + "=''";
    }
    EXPECT_EQ("", mistakeIn(nested + ends + "</speak>"));
    EXPECT_EQ("", mistakeIn(attributes + "/>"));
    EXPECT_EQ("1:7 a blank is missing before an attribute", mistakeIn("<speak&" + attributes));
    EXPECT_EQ("1:8 a bare &, which is written &amp;",
              mistakeIn("<speak>" + std::string(kCount, '&')));
}

}  // namespace
