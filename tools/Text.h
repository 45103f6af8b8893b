// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_TEXT_H
#define VOXTREL_TOOLS_TEXT_H

#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <system_error>

namespace voxtrelctl {

/// The number that is all of `text`, in decimal; nothing if it is none, or out of the type's range.
template <typename Number>
std::optional<Number> numberIn(const std::string& text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// Nothing but white space.
bool isBlank(const std::string& text);

/// True for a text that a service takes for SSML: it begins with the tag "<speak".
bool isMarkedUp(const std::string& text);

/// `text` for a terminal: control characters but line feed and tab become blanks, so that a spoken
/// file cannot steer the terminal.
std::string forTerminal(std::string text);

/// The word at that byte of `text`, or behind white space there; empty beyond the end. A word of a
/// marked-up text ends before the next tag.
std::string wordAt(const std::string& text, std::size_t byte);

/// Follows the voice through a text, which must outlive it.
class WordCursor {
public:
    explicit WordCursor(const std::string& text) : mText(text) {}

    /// The text up to the end of the word that begins at `byte`, from where the last call ended;
    /// empty for a place that was passed already.
    std::string advanceTo(std::size_t byte);

    /// All that is left.
    std::string rest();

private:
    const std::string& mText;
    std::size_t mDone = 0;
};

}  // namespace voxtrelctl

#endif
