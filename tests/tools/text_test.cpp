// SPDX-License-Identifier: Apache-2.0
#include "tools/Text.h"

#include <gtest/gtest.h>

using namespace voxtrelctl;

namespace {

TEST(AControlCharacter, DoesNotReachTheTerminal) {
    EXPECT_EQ(forTerminal("a\x1b[31mb\x07\x7f\tc\n"), "a [31mb  \tc\n");
}

TEST(AControlCharacter, OfTwoBytesDoesNotReachTheTerminalEither) {
    EXPECT_EQ(forTerminal("a\xC2\x9B"
                          "31mb\xC2\x80"),
              "a  31mb  ");
    EXPECT_EQ(forTerminal("Na\xC3\x9B \xC2\xBF?"), "Na\xC3\x9B \xC2\xBF?") << "letters stay";
}

TEST(MarkedUpText, BeginsWithTheSpeakTag) {
    EXPECT_TRUE(isMarkedUp("<speak>"));
    EXPECT_TRUE(isMarkedUp("<speak\nversion='1.1'>a</speak>"));
    EXPECT_TRUE(isMarkedUp("<speak/>"));
    for (const char* text : {"", "<speak", "<speaker>", " <speak>", "Hello <speak>"}) {
        EXPECT_FALSE(isMarkedUp(text)) << text;
    }
}

TEST(AWordOfMarkedUpText, EndsBeforeATag) {
    EXPECT_EQ(wordAt("<speak>Hello<p>wide</p> world", 7), "Hello");
    EXPECT_EQ(wordAt("Hello<p>wide", 0), "Hello<p>wide");
}

class TheVoice : public ::testing::Test {
protected:
    const std::string text = "Hello, world.  Bye, \u00e9t\u00e9";
    WordCursor cursor{text};
};

TEST_F(TheVoice, IsFollowedWordByWord) {
    EXPECT_EQ(cursor.advanceTo(0), "Hello,");
    EXPECT_EQ(cursor.advanceTo(7), " world.");
    EXPECT_EQ(cursor.advanceTo(15), "  Bye,");
    EXPECT_EQ(cursor.advanceTo(20), " \u00e9t\u00e9");
    EXPECT_EQ(cursor.rest(), "");
}

TEST_F(TheVoice, MaySkipWords) {
    EXPECT_EQ(cursor.advanceTo(7), "Hello, world.");
    EXPECT_EQ(cursor.rest(), "  Bye, \u00e9t\u00e9");
}

TEST_F(TheVoice, DoesNotGoBack) {
    EXPECT_EQ(cursor.advanceTo(7), "Hello, world.");
    EXPECT_EQ(cursor.advanceTo(0), "");
    EXPECT_EQ(cursor.advanceTo(8), "");
}

TEST_F(TheVoice, DoesNotGoBeyondTheEnd) {
    EXPECT_EQ(cursor.advanceTo(4'000'000'000U), text);
    EXPECT_EQ(wordAt(text, 4'000'000'000U), "");
}

TEST(AWord, IsFoundAtItsPlace) {
    EXPECT_EQ(wordAt("안녕하세요 세계.", 0), "안녕하세요");
    EXPECT_EQ(wordAt("안녕하세요 세계.", 16), "세계.");
}

}  // namespace
