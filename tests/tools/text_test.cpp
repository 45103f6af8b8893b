// SPDX-License-Identifier: Apache-2.0
#include "tools/Text.h"

#include <gtest/gtest.h>

#include <numeric>

using namespace voxtrelctl;

namespace {

using Pieces = std::vector<std::string>;

TEST(AShortText, IsOnePiece) {
    EXPECT_EQ(cutIntoPieces("Hello, world."), Pieces{"Hello, world."});
}

TEST(ATextOfNothing, HasNoPiece) {
    EXPECT_EQ(cutIntoPieces(""), Pieces{});
    EXPECT_EQ(cutIntoPieces(" \n\t "), Pieces{});
}

TEST(ALongText, IsCutAfterASentence) {
    EXPECT_EQ(cutIntoPieces("One two. Three four", 12), (Pieces{"One two. ", "Three four"}));
}

TEST(ALongText, IsCutAfterAWordWhereNoSentenceEnds) {
    EXPECT_EQ(cutIntoPieces("alpha beta gamma", 12), (Pieces{"alpha beta ", "gamma"}));
}

TEST(ALongWord, IsNeverCutInsideACharacter) {
    // Four characters of three bytes each.
    EXPECT_EQ(cutIntoPieces("가나다라", 8), (Pieces{"가나", "다라"}));
}

TEST(TheLastPiece, MayBeExactlyFull) {
    EXPECT_EQ(cutIntoPieces("abcdefgh", 8), Pieces{"abcdefgh"});
    EXPECT_EQ(cutIntoPieces("abcdefgh", 4), (Pieces{"abcd", "efgh"}));
}

TEST(BytesThatAreNoCharacters, AreCutAllTheSame) {
    const Pieces pieces = cutIntoPieces(std::string(100, '\x80'), 8);
    EXPECT_EQ(std::accumulate(pieces.begin(), pieces.end(), std::string()),
              std::string(100, '\x80'));
}

TEST(Pieces, JoinedAreTheText) {
    std::string text;
    for (int i = 0; i < 5000; ++i) {
        text += "Sentence number " + std::to_string(i) + (i % 7 == 0 ? ". " : ", ");
    }
    const Pieces pieces = cutIntoPieces(text, 1000);
    EXPECT_GT(pieces.size(), text.size() / 1000);
    for (const std::string& piece : pieces) {
        EXPECT_LE(piece.size(), 1000U);
    }
    EXPECT_EQ(std::accumulate(pieces.begin(), pieces.end(), std::string()), text);
}

TEST(Pieces, LeaveATurnToOthersAfterAMinuteOrSo) {
    std::string text;
    while (text.size() < 100'000) {
        text += "The last train had left the station an hour ago. ";
    }
    constexpr size_t kCharactersInAMinute = 900;  // at the usual speed
    for (const std::string& piece : cutIntoPieces(text)) {
        EXPECT_LE(piece.size(), kCharactersInAMinute * 5 / 4);
    }
}

TEST(ANulInAText, BecomesABlank) {
    EXPECT_EQ(cutIntoPieces(std::string("a\0b", 3)), Pieces{"a b"});
}

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
    EXPECT_EQ(WordCursor("<speak>Hello<p>wide</p> world").wordAt(7), "Hello");
    EXPECT_EQ(WordCursor("Hello<p>wide").wordAt(0), "Hello<p>wide");
}

TEST(TheVoice, IsFollowedWordByWord) {
    WordCursor cursor("Hello, world.  Bye");
    EXPECT_EQ(cursor.advanceTo(0), "Hello,");
    EXPECT_EQ(cursor.advanceTo(7), " world.");
    EXPECT_EQ(cursor.advanceTo(15), "  Bye");
    EXPECT_EQ(cursor.rest(), "");
}

TEST(TheVoice, MaySkipWords) {
    WordCursor cursor("one two three four");
    EXPECT_EQ(cursor.advanceTo(8), "one two three");
    EXPECT_EQ(cursor.rest(), " four");
}

TEST(TheVoice, DoesNotGoBack) {
    WordCursor cursor("one two three");
    EXPECT_EQ(cursor.advanceTo(4), "one two");
    EXPECT_EQ(cursor.advanceTo(0), "");
    EXPECT_EQ(cursor.advanceTo(5), "");
    EXPECT_EQ(cursor.rest(), " three");
}

TEST(TheVoice, IsFollowedInCharactersNotBytes) {
    WordCursor cursor("été à Noël");
    EXPECT_EQ(cursor.advanceTo(0), "été");
    EXPECT_EQ(cursor.advanceTo(4), " à");
    EXPECT_EQ(cursor.advanceTo(6), " Noël");
}

TEST(AnOffsetBeyondTheEnd, StandsForTheEnd) {
    WordCursor cursor("one two");
    EXPECT_EQ(cursor.advanceTo(4000000000U), "one two");
    EXPECT_EQ(cursor.wordAt(4000000000U), "");
}

TEST(AWord, IsFoundAtItsOffset) {
    const WordCursor cursor("안녕하세요 세계.");
    EXPECT_EQ(cursor.wordAt(0), "안녕하세요");
    EXPECT_EQ(cursor.wordAt(6), "세계.");
}

}  // namespace
