// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_MARKUP_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_MARKUP_H

#include <string>
#include <string_view>
#include <vector>

namespace sd_voxtrel {

/// True for a text that a service takes for marked up: it begins with the tag "<speak".
bool isMarkedUp(std::string_view text);

/// Without what may stand in front of "<speak": blanks, a byte order mark, an XML declaration, a
/// document type, comments. A text that has no such tag behind them stays as it is.
std::string_view withoutProlog(std::string_view text);

/// The names of the marks, in the order in which a service counts them.
std::vector<std::string> markNames(std::string_view text);

/// What is to be heard of a marked-up text: without tags, with the characters that references stand
/// for.
std::string withoutMarkup(std::string_view text);

/// Plain text as a marked-up text holds it.
std::string escaped(std::string_view text);

/// The same text, to be read character by character.
std::string spelled(std::string_view text);

/// Valid UTF-8 without a NUL: what is none is U+FFFD.
std::string repaired(std::string_view text);

}  // namespace sd_voxtrel

#endif
