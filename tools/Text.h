// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_TEXT_H
#define VOXTREL_TOOLS_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace voxtrelctl {

/// The most bytes of text that go to the service in one request: a minute of speech or so, since
/// others who have something to say are heard between two requests.
constexpr size_t kPieceBytes = 1024;

/// The most bytes of text that are sent before the service is known to be through with them. The
/// runtime of a device holds 520,192 bytes of requests that the service has not taken yet, of all
/// clients together, and loses what comes beyond without telling anybody: this leaves room for some
/// others that do the same.
constexpr size_t kMostOnTheWay = 65536;

/// Cuts `text` into pieces of at most `most` bytes, at the last end of a sentence, else the last
/// white space, else the last whole UTF-8 character of each piece. Joined they are the text, but
/// for NUL characters, which would end a request early and become blanks; pieces of nothing but
/// white space are left out. `most` is at least 4.
std::vector<std::string> cutIntoPieces(std::string text, size_t most = kPieceBytes);

/// True for a text that a service takes for SSML: it begins with the tag "<speak".
bool isMarkedUp(const std::string& text);

/// `text` for a terminal: control characters but line feed and tab become blanks, so that a spoken
/// file cannot steer the terminal.
std::string forTerminal(std::string text);

/// Follows the voice through a text: gives what has been spoken since the last call.
///
/// Offsets count UTF-8 characters from 0, as the service's word events do; a byte that is no part
/// of a valid character counts as one. Offsets beyond the end stand for the end. A word of a
/// marked-up text ends before the next tag.
class WordCursor {
public:
    explicit WordCursor(std::string text);

    /// The text up to the end of the word that begins at `offset`, from where the last call
    /// ended; empty for an offset that was passed already.
    std::string advanceTo(uint32_t offset);

    /// All that is left.
    std::string rest();

    /// Only the word at `offset`, without moving.
    std::string wordAt(uint32_t offset) const;

private:
    size_t byteOf(uint32_t offset) const;
    size_t endOfWord(size_t byte) const;

    std::string mText;
    std::string mEnds;  ///< characters that end a word
    size_t mDone = 0;
};

}  // namespace voxtrelctl

#endif
