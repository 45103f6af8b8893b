// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_MARKUPSCANNER_H
#define VOXTREL_SERVICE_MARKUPSCANNER_H

#include <cstddef>
#include <string>
#include <string_view>

namespace voxtreld {

/// One tag as it stands in a marked-up text.
struct MarkupTag {
    std::string_view name;
    std::string_view attributes;  ///< all that follows the name, as written
    bool opens = false;
    bool closes = false;  ///< with `opens`: an empty element
};

/// The value of an attribute as written, without its quotes; empty if the tag has none.
std::string_view attributeOf(const MarkupTag& tag, std::string_view name);

/// The character that a reference such as "&amp;" or "&#233;" at the begin of the text stands for,
/// in UTF-8, and its length there; empty, with `length` unchanged, for one that is not known.
std::string referencedCharacter(std::string_view text, size_t& length);

/// A lexical unit of a marked-up text.
struct MarkupToken {
    enum class Kind {
        Text,       ///< to be spoken as it stands
        Character,  ///< written as a reference; `character` is what it stands for
        Tag,
        Ignored,  ///< a comment and the like
    };

    Kind kind = Kind::Text;
    std::string_view source;  ///< where it stands; the sources of all tokens are the text
    std::string_view text;    ///< of `Text`; less than `source` in a CDATA section
    std::string character;
    MarkupTag tag;
};

/// Cuts a marked-up text into tokens. What is not well-formed is text, so that every text has
/// tokens; the time is proportional to its length, whatever it holds. Nothing outside the text is
/// ever read: entities that a document type defines are unknown.
///
/// Called on: one thread at a time. The text must outlive the scanner and its tokens.
class MarkupScanner {
public:
    /// @param text valid UTF-8.
    explicit MarkupScanner(std::string_view text) : mRest(text) {}

    /// @return false at the end of the text.
    bool next(MarkupToken& token);

private:
    std::string_view mRest;
};

}  // namespace voxtreld

#endif
