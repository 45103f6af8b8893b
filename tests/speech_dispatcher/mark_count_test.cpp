// SPDX-License-Identifier: Apache-2.0
// A mark is known by its number alone: the module must count as the service does, whatever the
// text.
#include <gtest/gtest.h>

#include <random>

#include "bridges/speech-dispatcher/Markup.h"
#include "service/MarkupElements.h"
#include "service/MarkupScanner.h"

namespace {

constexpr std::string_view kFragments[] = {
    "<",        ">",         "/",  " ",   "\n",   "=",     "'",      "\"",      "a",
    "&",        "&lt;",      "<a", "</a", "<!--", "-->",   "<?",     "?>",      "<![CDATA[",
    "]]>",      "<!DOCTYPE", "[",  "]",   "mark", "<mark", "</mark", "<mark/>", "<mark name='a'/>",
    "name='a'", "<a b='c'>",
};

std::string anyText(std::mt19937& random) {
    std::string text;
    for (auto left = random() % 12; left > 0; --left) {
        text += kFragments[random() % std::size(kFragments)];
    }
    return text;
}

std::size_t marksOfTheService(const std::string& text) {
    voxtreld::MarkupScanner scanner(text);
    std::size_t count = 0;
    for (voxtreld::MarkupToken token; scanner.next(token);) {
        const bool isMark = token.kind == voxtreld::MarkupToken::Kind::Tag && token.tag.opens &&
                            voxtreld::elementOf(token.tag.name) == voxtreld::MarkupElement::Mark;
        count += isMark ? 1 : 0;
    }
    return count;
}

TEST(TheModule, CountsMarksAsTheServiceDoes) {
    constexpr int kTexts = 100'000;
    std::mt19937 random(1);
    std::size_t marks = 0;
    for (int count = 0; count < kTexts; ++count) {
        const std::string text = anyText(random);
        const std::size_t ofTheService = marksOfTheService(text);
        ASSERT_EQ(ofTheService, sd_voxtrel::markNames(text).size()) << text;
        marks += ofTheService;
    }
    EXPECT_LT(1000U, marks);
}

}  // namespace
