// SPDX-License-Identifier: Apache-2.0
#include "service/MarkupScanner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace voxtreld {
namespace {

/// The tokens of a text, one after the other: "text:...", "char:...", "open:...", "close:...",
/// "empty:..." and "ignored".
std::vector<std::string> tokensOf(const std::string& text) {
    std::vector<std::string> tokens;
    MarkupScanner scanner(text);
    std::string sources;
    for (MarkupToken token; scanner.next(token);) {
        sources += token.source;
        const std::string name(token.tag.name);
        switch (token.kind) {
            case MarkupToken::Kind::Text:
                tokens.push_back("text:" + std::string(token.text));
                break;
            case MarkupToken::Kind::Character:
                tokens.push_back("char:" + token.character);
                break;
            case MarkupToken::Kind::Tag:
                tokens.push_back((!token.tag.opens   ? "close:"
                                  : token.tag.closes ? "empty:"
                                                     : "open:") +
                                 name);
                break;
            default:
                tokens.emplace_back("ignored");
        }
    }
    EXPECT_EQ(text, sources);
    return tokens;
}

struct Scanned {
    const char* text;
    std::vector<std::string> tokens;
};

TEST(AMarkedUpText, ConsistsOfTextTagsAndReferences) {
    const Scanned kTexts[] = {
        {"", {}},
        {"plain", {"text:plain"}},
        {"<p>a</p>", {"open:p", "text:a", "close:p"}},
        {"a<mark name='1'/>b", {"text:a", "empty:mark", "text:b"}},
        {"<break/><break />", {"empty:break", "empty:break"}},
        {"<say-as\n interpret-as='x>y'>", {"open:say-as"}},
        {"</p >", {"close:p"}},
        {"a&amp;b", {"text:a", "char:&", "text:b"}},
        {"&lt;&gt;&quot;&apos;", {"char:<", "char:>", "char:\"", "char:'"}},
        {"&#65;&#xE9;&#x1F600;", {"char:A", "char:\xC3\xA9", "char:\xF0\x9F\x98\x80"}},
        {"&#00000000000000000065;&#x000000000041;", {"char:A", "char:A"}},
        {"a<!-- <p> -->b", {"text:a", "ignored", "text:b"}},
        {"<?xml version='1.0'?>a", {"ignored", "text:a"}},
        {"<!DOCTYPE speak>a", {"ignored", "text:a"}},
        {"<!DOCTYPE speak [<!ENTITY x 'y'>]>&x;", {"ignored", "text:&x;"}},
        {"<![CDATA[a<b&amp;]]>c", {"text:a<b&amp;", "text:c"}},
        {"<![CDATA[]]>", {"text:"}},
    };
    for (const Scanned& each : kTexts) {
        EXPECT_EQ(each.tokens, tokensOf(each.text)) << each.text;
    }
}

TEST(AMarkedUpText, ThatIsNotWellFormedIsText) {
    const Scanned kTexts[] = {
        {"a < b", {"text:a ", "text:< b"}},
        {"I <3 you", {"text:I ", "text:<3 you"}},
        {"<", {"text:<"}},
        {"<p", {"text:<p"}},
        {"</", {"text:</"}},
        {"</>", {"text:</>"}},
        {"<p a=\"x>b", {"text:<p a=\"x>b"}},
        {"<p a=\"<b>\">", {"text:<p a=\"", "open:b", "text:\">"}},
        {"&", {"text:&"}},
        {"fish & chips", {"text:fish ", "text:& chips"}},
        {"&nbsp;", {"text:&nbsp;"}},
        {"&;&#;&#x;", {"text:&;", "text:&#;", "text:&#x;"}},
        {"&#0;&#xD800;&#1114112;&#99999999999;",
         {"text:&#0;", "text:&#xD800;", "text:&#1114112;", "text:&#99999999999;"}},
        {"<!-- no end", {"ignored"}},
        {"<![CDATA[no end", {"text:no end"}},
        {"<!DOCTYPE x [", {"ignored"}},
        {"<? no end", {"ignored"}},
    };
    for (const Scanned& each : kTexts) {
        EXPECT_EQ(each.tokens, tokensOf(each.text)) << each.text;
    }
}

std::string attribute(const std::string& attributes, const char* name) {
    MarkupTag tag;
    tag.attributes = attributes;
    return std::string(attributeOf(tag, name));
}

TEST(AnAttribute, IsFoundByItsWholeName) {
    EXPECT_EQ("1s", attribute(" time=\"1s\"", "time"));
    EXPECT_EQ("1s", attribute(" strength = 'x' time\n=\t'1s' ", "time"));
    EXPECT_EQ("a>b \"c\"", attribute(" name='a>b \"c\"'", "name"));
    EXPECT_EQ("fr", attribute(" lang=\"en\" xml:lang=\"fr\"", "xml:lang"));
    EXPECT_EQ("", attribute(" xml:lang=\"fr\"", "lang"));
    EXPECT_EQ("", attribute(" name=\"time=\"", "time"));
    EXPECT_EQ("first", attribute(" a='first' a='second'", "a"));
}

TEST(AnAttribute, ThatIsNotQuotedIsNone) {
    for (const char* attributes : {"", " time", " time=", " time=1s", " time='1s", " = =", "'"}) {
        EXPECT_EQ("", attribute(attributes, "time")) << attributes;
    }
}

}  // namespace
}  // namespace voxtreld
