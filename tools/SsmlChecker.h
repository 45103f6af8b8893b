// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SSMLCHECKER_H
#define VOXTREL_TOOLS_SSMLCHECKER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace voxtrelctl {

/// Finds the first mistake in a marked-up text (SSML), which a service would pass over in silence.
///
/// The text is one `speak` element, from its first character on; its elements are balanced and
/// known to SSML 1.1 (those with a prefix, as in "x:y", are somebody else's), attributes are quoted
/// and not repeated, references are one of XML's five or a number. What attributes mean is not
/// checked. Takes time proportional to the text. Called on: one thread at a time. Locks: none.
class SsmlChecker {
public:
    /// Those of SSML 1.1.
    static constexpr std::string_view kElements[] = {
        "audio",  "break", "desc", "emphasis", "lang",  "lexicon", "lookup",
        "mark",   "meta",  "p",    "metadata", "s",     "phoneme", "prosody",
        "say-as", "speak", "sub",  "token",    "voice", "w",
    };

    struct Mistake {
        size_t line;    ///< from 1
        size_t column;  ///< from 1, in UTF-8 characters
        std::string what;
    };

    /// @param text must outlive this object.
    explicit SsmlChecker(std::string_view text) : mText(text) {}

    /// To be called once. @return the first mistake, if there is one.
    std::optional<Mistake> check();

private:
    bool checkDocument();
    bool checkText();
    bool checkReference(size_t end);
    bool checkMarkup();
    bool checkStartTag();
    bool checkEndTag();
    bool checkAttributes(bool& isEmpty);
    bool checkAttribute();
    bool checkValue();
    bool skipTo(size_t begin, std::string_view end, const char* what);
    bool fail(size_t at, std::string what);

    bool startsWith(std::string_view prefix) const {
        return mText.substr(mAt, prefix.size()) == prefix;
    }
    bool atEnd() const { return mAt >= mText.size(); }
    char here() const { return atEnd() ? '\0' : mText[mAt]; }
    void skipBlanks();
    std::string_view takeName();

    const std::string_view mText;
    size_t mAt = 0;
    std::vector<std::string_view> mOpen;
    std::vector<std::string_view> mAttributes;  ///< of the tag
    std::optional<Mistake> mMistake;
};

}  // namespace voxtrelctl

#endif
