// SPDX-License-Identifier: Apache-2.0
#include "tests/markup/Reading.h"

#include <vector>

#include "service/MarkupScanner.h"

namespace voxtrel_test {
namespace {

using voxtreld::MarkupTag;
using voxtreld::MarkupToken;

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool isText(std::string_view source) {
    if (startsWith(source, "<![CDATA[")) {
        return endsWith(source, "]]>");
    }
    return source.find_first_of("<&") == std::string_view::npos;
}

/// Whether it ends where it says that it does.
bool isIgnorable(std::string_view source) {
    return startsWith(source, "<!--") ? source.size() >= 7 && endsWith(source, "-->")
                                      : startsWith(source, "<?") && endsWith(source, "?>");
}

/// What is open, tag by tag.
class Nesting {
public:
    bool takes(const MarkupTag& tag) {
        if (tag.opens && !tag.closes) {
            mOpen.push_back(tag.name);
        } else if (!tag.opens) {
            if (mOpen.empty() || mOpen.back() != tag.name) {
                return false;
            }
            mOpen.pop_back();
        }
        return true;
    }
    bool isClosed() const { return mOpen.empty(); }

private:
    std::vector<std::string_view> mOpen;
};

}  // namespace

std::string misreadIn(std::string_view text) {
    voxtreld::MarkupScanner scanner(text);
    Nesting nesting;
    for (MarkupToken token; scanner.next(token);) {
        const bool isRight = token.kind == MarkupToken::Kind::Text      ? isText(token.source)
                             : token.kind == MarkupToken::Kind::Ignored ? isIgnorable(token.source)
                             : token.kind == MarkupToken::Kind::Tag     ? nesting.takes(token.tag)
                                                                        : true;
        if (!isRight) {
            return std::string(token.source);
        }
    }
    return nesting.isClosed() ? "" : "an element that does not end";
}

}  // namespace voxtrel_test
