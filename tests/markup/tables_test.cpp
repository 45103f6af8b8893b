// SPDX-License-Identifier: Apache-2.0
// Service, command line and guide know the same elements and attributes of marked-up text.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "service/MarkupElements.h"
#include "service/MarkupReader.h"
#include "tests/support/TempFolder.h"
#include "tools/SsmlChecker.h"

namespace {

using voxtrelctl::SsmlChecker;
using voxtreld::MarkupElement;
using voxtreld::MarkupPiece;

/// The rows of the guide's table of elements but the last, which is about all others.
std::vector<std::string> rowsOfTheGuide() {
    static const std::string guide =
        voxtrel_test::readFile(std::string(VOXTREL_SOURCE_DIR) + "/docs/service.md");
    const size_t begin = guide.find("| Element | What it does |");
    const size_t end = guide.find("| all others", begin);
    std::vector<std::string> rows;
    for (size_t at = guide.find('\n', begin) + 1; at < end; at = guide.find('\n', at) + 1) {
        rows.push_back(guide.substr(at, guide.find('\n', at) - at));
    }
    return rows;
}

/// What stands between backquotes.
std::set<std::string> namesIn(const std::string& text) {
    static const std::regex name("`([^`]+)`");
    std::set<std::string> names;
    for (std::sregex_iterator it(text.begin(), text.end(), name), end; it != end; ++it) {
        names.insert((*it)[1]);
    }
    return names;
}

std::set<std::string> elementsOfTheGuide() {
    std::set<std::string> elements;
    for (const std::string& row : rowsOfTheGuide()) {
        elements.merge(namesIn(row.substr(0, row.find('|', 1))));
    }
    elements.erase("xml:lang");  // an attribute with a row of its own
    return elements;
}

std::string mistakeIn(const std::string& text) {
    const auto mistake = SsmlChecker(text).check();
    return mistake ? mistake->what : "";
}

/// What the engine is given of a text, with voices and pauses.
std::string spoken(const std::string& text) {
    voxtreld::MarkupReader reader(text, voxtreld::Prosody(),
                                  {{LANG_EN_US, "one"}, {LANG_EN_US, "two"}, {LANG_FR_FR, "un"}});
    std::string all;
    for (MarkupPiece piece; reader.next(piece);) {
        all += std::to_string(piece.prosody.language) + "." + std::to_string(piece.prosody.voice) +
               " " + piece.document() + std::to_string(piece.pauseMs) + "\n";
    }
    return all;
}

TEST(TheElementsOfTheService, AreThoseOfItsGuide) {
    std::set<std::string> known;
    for (const auto& each : voxtreld::kMarkupElements) {
        known.emplace(each.name);
    }
    EXPECT_EQ(elementsOfTheGuide(), known);
}

TEST(TheElementsOfTheService, AreElementsOfSsml) {
    for (const auto& each : voxtreld::kMarkupElements) {
        EXPECT_EQ("", mistakeIn("<speak><" + std::string(each.name) + "/></speak>"));
    }
}

TEST(AnElementOfSsml, ThatTheServiceDoesNotKnowIsPassedOverAsItsGuideSays) {
    const std::set<std::string> known = elementsOfTheGuide();
    const std::string plain = spoken("<speak>a</speak>");
    size_t passedOver = 0;
    for (const std::string_view each : SsmlChecker::kElements) {
        const std::string name(each);
        const bool isKnown = voxtreld::elementOf(each) != MarkupElement::Unknown;
        EXPECT_EQ(known.count(name) == 1, isKnown) << name;
        if (!isKnown) {
            ++passedOver;
            EXPECT_EQ(plain, spoken("<speak><" + name + " x='y'>a</" + name + "></speak>"));
        }
    }
    EXPECT_EQ(std::size(SsmlChecker::kElements), known.size() + passedOver);
}

struct Attribute {
    const char* name;
    const char* with;     ///< a text in which it does something
    const char* without;  ///< the same without it
};

/// All that the service reads.
constexpr Attribute kAttributes[] = {
    {"xml:lang", "<speak xml:lang='fr'>a</speak>", "<speak>a</speak>"},
    {"xml:lang", "<speak><lang xml:lang='fr'>a</lang></speak>", "<speak><lang>a</lang></speak>"},
    {"xml:lang", "<speak><p xml:lang='fr'>a</p></speak>", "<speak><p>a</p></speak>"},
    {"xml:lang", "<speak><s xml:lang='fr'>a</s></speak>", "<speak><s>a</s></speak>"},
    {"xml:lang", "<speak><voice xml:lang='fr'>a</voice></speak>",
     "<speak><voice>a</voice></speak>"},
    {"name", "<speak><voice name='two'>a</voice></speak>", "<speak><voice>a</voice></speak>"},
    {"variant", "<speak><voice variant='2'>a</voice></speak>", "<speak><voice>a</voice></speak>"},
    {"time", "<speak>a<break time='7ms'/></speak>", "<speak>a<break/></speak>"},
    {"strength", "<speak>a<break strength='weak'/></speak>", "<speak>a<break/></speak>"},
    {"rate", "<speak><prosody rate='fast'>a</prosody></speak>",
     "<speak><prosody>a</prosody></speak>"},
    {"pitch", "<speak><prosody pitch='low'>a</prosody></speak>",
     "<speak><prosody>a</prosody></speak>"},
    {"range", "<speak><prosody range='low'>a</prosody></speak>",
     "<speak><prosody>a</prosody></speak>"},
    {"volume", "<speak><prosody volume='loud'>a</prosody></speak>",
     "<speak><prosody>a</prosody></speak>"},
    {"level", "<speak><emphasis level='strong'>a</emphasis></speak>",
     "<speak><emphasis>a</emphasis></speak>"},
    {"interpret-as", "<speak><say-as interpret-as='digits'>1</say-as></speak>",
     "<speak><say-as>1</say-as></speak>"},
    {"alias", "<speak><sub alias='b'>a</sub></speak>", "<speak><sub>a</sub></speak>"},
};

TEST(AnAttributeThatTheServiceReads, DoesSomethingAndIsNoMistake) {
    for (const Attribute& each : kAttributes) {
        EXPECT_NE(spoken(each.without), spoken(each.with)) << each.with;
        EXPECT_EQ("", mistakeIn(each.with)) << each.with;
    }
}

TEST(AnAttributeThatTheServiceReads, IsInItsGuide) {
    std::set<std::string> documented;
    for (const std::string& row : rowsOfTheGuide()) {
        documented.merge(namesIn(row));
    }
    for (const Attribute& each : kAttributes) {
        EXPECT_EQ(1U, documented.count(each.name)) << each.name;
    }
    for (const std::string_view name : voxtreld::kEngineAttributes) {
        const auto isTried = [name](const Attribute& each) { return each.name == name; };
        EXPECT_TRUE(std::any_of(std::begin(kAttributes), std::end(kAttributes), isTried)) << name;
    }
}

}  // namespace
