// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_TEXT_H
#define VOXTREL_SERVICE_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace voxtreld {

/// The text as valid UTF-8: every byte that belongs to no valid character becomes U+FFFD, so that
/// character offsets count it as one. Overlong forms and surrogates are invalid.
///
/// Called on: any thread. Locks: none.
std::string validUtf8(std::string text);

/// Number of characters (code points) of valid UTF-8.
size_t characterCount(std::string_view text);

/// The length in bytes of the next piece of valid UTF-8 to speak at one go: up to the last sentence
/// end within `limit` bytes, else the last blank, else as many whole characters as fit. All of the
/// text if it fits; never 0 for a text that is not empty.
///
/// @param limit at least 4, the longest character.
size_t pieceLength(std::string_view text, size_t limit);

/// The length in bytes up to the first sentence end, or of all of the text if it has none.
size_t sentenceLength(std::string_view text);

}  // namespace voxtreld

#endif
