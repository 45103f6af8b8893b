// SPDX-License-Identifier: Apache-2.0
// What the command line finds no mistake in, the service reads as it is written.
#include <gtest/gtest.h>

#include <string>

#include "service/MarkupReader.h"
#include "tests/markup/Reading.h"
#include "tools/SsmlChecker.h"

namespace {

using voxtrel_test::misreadIn;
using voxtrelctl::SsmlChecker;

TEST(MarkupWithoutAMistake, IsReadAsItIsWritten) {
    const char* const kTexts[] = {
        "<speak></speak>",
        "<speak/>",
        "<speak>Hello.</speak>\n<!-- end --> ",
        "<speak version=\"1.1\" xmlns='http://www.w3.org/'\n xml:lang=\"fr\">a</speak >",
        "<speak>a<break time='1s' strength = \"weak\"/>b<mark name='m'></mark></speak>",
        "<speak><p><s>a</s></p><prosody rate='slow'><emphasis>b</emphasis></prosody></speak>",
        "<speak><sub alias='b &amp; c > \"d\" /'>a</sub><x:any y='/'><speak/></x:any ></speak\n>",
        "<speak>&amp;&lt;&gt;&quot;&apos;&#233;&#xE9;&#x10FFFF;&#0000000000000065;</speak>",
        "<speak>&#x00000000000041;<voice name='&#00000000000000000065;'>a</voice></speak>",
        "<speak>a > b ]]> 'c' \"d\" --> ?></speak>",
        "<speak><!----><!-- <b> & -- - --><?><?><?x <c> ?><![CDATA[]]><![CDATA[<d> & ]]]></speak>",
        "<speak>\xEC\x95\x88\xEB\x85\x95 \xC3\xA9<mark name='\xC3\xA9'/></speak>",
    };
    for (const char* text : kTexts) {
        const auto mistake = SsmlChecker(text).check();
        EXPECT_FALSE(mistake) << text << ": " << mistake->column << " " << mistake->what;
        EXPECT_EQ("", misreadIn(text)) << text;
    }
}

TEST(MarkupThatIsMisread, IsAMistake) {
    const char* const kTexts[] = {
        "<speak>",
        "<speak>a</p></speak>",
        "<speak><p>a</speak></p>",
        "<speak>a < b</speak>",
        "<speak>a & b</speak>",
        "<speak>&nbsp;</speak>",
        "<speak><break time='1s/></speak>",
        "<speak><sub alias='<'>a</sub></speak>",
        "<speak><!--></speak>",
        "<speak><!---></speak>",
        "<speak><!-- a</speak>",
        "<speak><?></speak>",
        "<speak><![CDATA[a]]</speak>",
    };
    for (const char* text : kTexts) {
        EXPECT_NE("", misreadIn(text)) << text;
        EXPECT_TRUE(SsmlChecker(text).check()) << text;
    }
}

TEST(MarkupThatIsMisread, IsSaidToBe) {
    EXPECT_EQ("&nbsp;", misreadIn("<speak>&nbsp;</speak>"));
    EXPECT_EQ("</p>", misreadIn("<speak>a</p></speak>"));
    EXPECT_EQ("an element that does not end", misreadIn("<speak>a"));
}

}  // namespace
