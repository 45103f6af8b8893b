// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_TEXTCUTTER_H
#define VOXTREL_SESSION_TEXTCUTTER_H

#include <cstddef>
#include <optional>
#include <string_view>

#include "voxtrel/Outcome.h"

namespace voxtrel {

/// The largest piece in which a text is sent: a minute of speech, after which others have a turn.
constexpr std::size_t kPieceBytes = 1024;

/// A service may take it for marked up: it begins with the tag "<speak".
bool isMarkedUp(std::string_view text);

/// How many bytes of `text`, which is UTF-8 and not marked up, go in the next piece: all of it if
/// it fits, else up to the end of a sentence, a line, a word or at least a character, such that the
/// rest is not marked up either. 0 only for an empty text.
std::size_t nextPiece(std::string_view text);

/// Counts code points: the bytes that begin one.
std::size_t countCharacters(std::string_view text);

/// `from` moved on by code points, not beyond the end of `text`.
Position advance(std::string_view text, Position from, std::size_t characters);

/// Where `text` stops being UTF-8, or nothing. Surrogates and forms that are too long are not
/// UTF-8.
std::optional<std::size_t> firstInvalidByte(std::string_view text);

}  // namespace voxtrel

#endif
