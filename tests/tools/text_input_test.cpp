// SPDX-License-Identifier: Apache-2.0
#include "tools/TextInput.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tools/Errors.h"

using namespace voxtrelctl;

namespace {

std::string refusal(const std::string& bytes, const std::string& set = "UTF-8") {
    try {
        return toUtf8(bytes, "the text", set);
    } catch (const Failure& failure) {
        return failure.what();
    }
}

TEST(Utf8, StaysAsItIs) {
    EXPECT_EQ(toUtf8("\xC3\xA9t\xC3\xA9", "x", "ISO-8859-1"), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(toUtf8("\xEF\xBB\xBFHi", "x", "UTF-8"), "Hi") << "without its mark";
}

TEST(ATextInTheLocalesSet, IsConverted) {
    EXPECT_EQ(toUtf8("\xE9t\xE9", "x", "ISO-8859-1"), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(toUtf8("\x80", "x", "WINDOWS-1252"), "\xE2\x82\xAC");
}

TEST(Utf16, IsConvertedByItsMark) {
    EXPECT_EQ(toUtf8(std::string("\xFF\xFE\xE9\0", 4), "x", "UTF-8"), "\xC3\xA9");
    EXPECT_EQ(toUtf8(std::string("\xFE\xFF\0\xE9", 4), "x", "UTF-8"), "\xC3\xA9");
    EXPECT_EQ(refusal(std::string("\xFF\xFE\0\xD8", 4)),
              "-3 bad parameter: the text, line 1: bytes that are no text in UTF-16: save it in "
              "UTF-8");
}

TEST(Utf16, HasItsLinesCounted) {
    const std::string line = "-3 bad parameter: the text, line ";
    EXPECT_EQ(refusal(std::string("\xFF\xFE\n\0\0\xD8", 6)).rfind(line + "2: ", 0), 0U);
    EXPECT_EQ(refusal(std::string("\xFF\xFE\n\x01\0\xD8", 6)).rfind(line + "1: ", 0), 0U)
        << "a letter with the byte of a line feed in it ends no line";
}

/// The character set of a locale that every system has.
std::string setIn(const char* locale) {
    setenv("LC_ALL", locale, 1);
    std::string set = localeSet();
    unsetenv("LC_ALL");
    return set;
}

TEST(TheLocalesSet, IsThatOfTheUser) {
    EXPECT_EQ(setIn("C.UTF-8"), "UTF-8");
    EXPECT_EQ(setIn("POSIX"), "ANSI_X3.4-1968");
}

TEST(ATextThatIsNone, IsRefusedWithItsLine) {
    EXPECT_EQ(refusal("one\ntwo \xE9\n"),
              "-3 bad parameter: the text, line 2: bytes that are no text in UTF-8: convert it "
              "first, as with: iconv -f LATIN1 -t UTF-8");
    EXPECT_EQ(refusal(std::string("a\0b", 3)),
              "-3 bad parameter: the text, line 1: a byte 0, so that it is no text: name a text "
              "file");
}

}  // namespace
