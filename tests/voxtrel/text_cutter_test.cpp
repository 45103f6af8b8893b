// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "voxtrel/session/TextCutter.h"

namespace {

using namespace voxtrel;

TEST(ATextThatFits, GoesInOnePiece) {
    EXPECT_EQ(0U, nextPiece(""));
    EXPECT_EQ(6U, nextPiece("Hello."));
    EXPECT_EQ(kPieceBytes, nextPiece(std::string(kPieceBytes, 'a')));
}

TEST(ALongText, IsCutAfterItsLastSentenceThatFits) {
    const std::string first = "One. Two! Three? ";
    EXPECT_EQ(first.size(), nextPiece(first + std::string(kPieceBytes, 'a')));
}

TEST(ALongText, IsCutAfterALineWhereNoSentenceEnds) {
    EXPECT_EQ(10U, nextPiece("one\ntwo 3\nfour " + std::string(kPieceBytes, 'a')));
}

TEST(ALongText, IsCutAfterAWordWhereNoLineEnds) {
    EXPECT_EQ(8U, nextPiece("one two " + std::string(kPieceBytes, 'a')));
}

TEST(ALongText, IsCutAtTheVeryEndOfThePieceWhereThatFits) {
    const std::string first = std::string(kPieceBytes - 2, 'a') + ". ";
    EXPECT_EQ(kPieceBytes, nextPiece(first + "And more."));
}

TEST(ALongWord, IsCutBetweenCharacters) {
    EXPECT_EQ(kPieceBytes, nextPiece(std::string(kPieceBytes + 1, 'a')));
    for (const std::string character : {"\u00e9", "\u20ac", "\U0001F600"}) {
        for (std::size_t shift = 0; shift < character.size(); ++shift) {
            std::string text(shift, 'a');
            while (text.size() < 2 * kPieceBytes) {
                text += character;
            }
            const std::size_t piece = nextPiece(text);
            EXPECT_EQ(0U, (piece - shift) % character.size()) << character;
            EXPECT_LT(kPieceBytes - character.size(), piece) << character;
            EXPECT_GE(kPieceBytes, piece) << character;
        }
    }
}

TEST(AMarkedUpText, BeginsWithTheTagSpeak) {
    for (const char* text : {"<speak>", "<speak xml:lang='fr'>", "<speak/>", "<speak\n>"}) {
        EXPECT_TRUE(isMarkedUp(text)) << text;
    }
    for (const char* text : {"", "speak", "<speak", "<speaker>", " <speak>", "<s>"}) {
        EXPECT_FALSE(isMarkedUp(text)) << text;
    }
}

TEST(ALongText, IsNotCutWhereTheRestWouldBeTakenForMarkedUp) {
    const std::string tag = "<speak>" + std::string(kPieceBytes, 'x');
    EXPECT_EQ(5U, nextPiece("One. Two. " + tag));
    EXPECT_EQ(4U, nextPiece("One\nTwo\n" + tag));
    EXPECT_EQ(4U, nextPiece("One two " + tag));
    EXPECT_EQ(kPieceBytes, nextPiece(" " + tag));
    EXPECT_EQ(kPieceBytes - 1, nextPiece(std::string(kPieceBytes, 'a') + tag));
}

TEST(ATextInPieces, IsWholeAgainWhenTheyArePutTogether) {
    std::string text;
    for (int line = 0; line < 500; ++line) {
        text += "Ligne " + std::to_string(line) + ", \u00e7a va? Oui" + (line % 3 ? ". " : "\n");
    }
    std::size_t at = 0;
    std::size_t characters = 0;
    while (at < text.size()) {
        const std::size_t piece = nextPiece(std::string_view(text).substr(at));
        ASSERT_LT(0U, piece);
        ASSERT_GE(kPieceBytes, piece);
        ASSERT_FALSE(firstInvalidByte(std::string_view(text).substr(at, piece)));
        characters += countCharacters(std::string_view(text).substr(at, piece));
        at += piece;
    }
    EXPECT_EQ(text.size(), at);
    EXPECT_EQ(countCharacters(text), characters);
}

TEST(Characters, AreCountedAsCodePoints) {
    EXPECT_EQ(0U, countCharacters(""));
    EXPECT_EQ(4U, countCharacters("a\u00e9\u20ac\U0001F600"));
}

TEST(APosition, MovesOnByCharactersAndKnowsTheirBytes) {
    const std::string text = "a\u00e9\u20ac\U0001F600b";
    const std::size_t bytes[] = {0, 1, 3, 6, 10, 11};
    for (std::size_t count = 0; count < 6; ++count) {
        const Position position = advance(text, {}, count);
        EXPECT_EQ(count, position.characters);
        EXPECT_EQ(bytes[count], position.bytes);
    }
    const Position on = advance(text, {3, 2}, 2);
    EXPECT_EQ(10U, on.bytes);
    EXPECT_EQ(4U, on.characters);
}

TEST(APosition, DoesNotLeaveTheText) {
    const Position end = advance("\u00e9t\u00e9", {}, 0xFFFFFFFF);
    EXPECT_EQ(5U, end.bytes);
    EXPECT_EQ(3U, end.characters);
}

TEST(Utf8, IsTakenInAllItsLengths) {
    for (const char* text : {"", "a", "\x7F", "\u0080", "\u07FF", "\u0800", "\uD7FF", "\uE000",
                             "\uFFFF", "\U00010000", "\U0010FFFF"}) {
        EXPECT_FALSE(firstInvalidByte(text)) << text;
    }
    EXPECT_FALSE(firstInvalidByte(std::string(3, '\0')));
}

TEST(Utf8, IsNotWhatIsCutOffTooLongASurrogateOrTooLarge) {
    for (const char* text :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC3", "\xC3(", "\xE0\x80\x80", "\xE0\x9F\xBF",
          "\xE2\x82", "\xE2\x28\xA1", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x80\x80\x80",
          "\xF0\x8F\xBF\xBF", "\xF0\x9F\x98", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        EXPECT_EQ(3U, firstInvalidByte("abc" + std::string(text))) << text;
    }
}

}  // namespace
