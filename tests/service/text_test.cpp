// SPDX-License-Identifier: Apache-2.0
#include "service/Text.h"

#include <gtest/gtest.h>

namespace voxtreld {
namespace {

const std::string kReplacement = "\xEF\xBF\xBD";

TEST(ValidText, IsLeftAsItIs) {
    for (const std::string text : {"", "plain", "\xC3\x89t\xC3\xA9", "\xEC\x95\x88\xEB\x85\x95",
                                   "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF", "\xED\x9F\xBF"}) {
        EXPECT_EQ(text, validUtf8(text));
    }
}

struct BrokenText {
    const char* what;
    std::string text;
    std::string repaired;
};

TEST(BrokenUtf8, GetsAReplacementForEveryByteThatBelongsToNoCharacter) {
    const BrokenText kCases[] = {
        {"lone continuation", "a\x80z", "a" + kReplacement + "z"},
        {"cut character", "a\xC3", "a" + kReplacement},
        {"cut long character", "\xE2\x82", kReplacement + kReplacement},
        {"lead before a letter", "\xC3(", kReplacement + "("},
        {"overlong slash", "\xC0\xAF", kReplacement + kReplacement},
        {"overlong of three bytes", "\xE0\x80\xAF", kReplacement + kReplacement + kReplacement},
        {"surrogate", "\xED\xA0\x80", kReplacement + kReplacement + kReplacement},
        {"beyond the last code point", "\xF4\x90\x80\x80",
         kReplacement + kReplacement + kReplacement + kReplacement},
        {"never a lead", "\xFF\xFE", kReplacement + kReplacement},
        {"good after bad", "\xFF\xC3\xA9", kReplacement + "\xC3\xA9"},
    };
    for (const BrokenText& each : kCases) {
        EXPECT_EQ(each.repaired, validUtf8(each.text)) << each.what;
    }
}

TEST(CharacterCount, CountsCodePointsNotBytes) {
    EXPECT_EQ(0U, characterCount(""));
    EXPECT_EQ(3U, characterCount("abc"));
    EXPECT_EQ(3U, characterCount("\xC3\x89t\xC3\xA9"));
    EXPECT_EQ(2U, characterCount("\xEC\x95\x88\xF0\x9F\x98\x80"));
}

TEST(APiece, IsTheWholeTextWhenItFits) {
    EXPECT_EQ(5U, pieceLength("a b c", 5));
    EXPECT_EQ(0U, pieceLength("", 5));
}

TEST(APiece, EndsWithTheLastSentenceThatFits) {
    EXPECT_EQ(4U, pieceLength("One. Two. Three.", 8));
    EXPECT_EQ(9U, pieceLength("One. Two. Three.", 9));
    EXPECT_EQ(5U, pieceLength("Oui!\nNon et non", 12));
}

TEST(APiece, DoesNotTakeAPointInsideANumberForASentenceEnd) {
    EXPECT_EQ(3U, pieceLength("pi 3.14159265", 8));
}

TEST(APiece, EndsAfterTheLastBlankWhenNoSentenceFits) {
    EXPECT_EQ(8U, pieceLength("one two three", 10));
}

TEST(APiece, IsCutBetweenCharactersWhenThereIsNoBlank) {
    EXPECT_EQ(4U, pieceLength("aaaaaaaa", 4));
    EXPECT_EQ(4U, pieceLength("\xC3\xA9\xC3\xA9\xC3\xA9", 5));
    EXPECT_EQ(3U, pieceLength("\xEC\x95\x88\xEB\x85\x95", 5));
    EXPECT_EQ(4U, pieceLength("\xF0\x9F\x98\x80\xF0\x9F\x98\x80", 4));
}

}  // namespace
}  // namespace voxtreld
