// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_MARKUPELEMENTS_H
#define VOXTREL_SERVICE_MARKUPELEMENTS_H

#include <cstdint>
#include <string>
#include <string_view>

#include "service/MarkupScanner.h"

namespace voxtreld {

/// What an element of a marked-up text does.
enum class MarkupElement {
    Unknown,   ///< nothing; its text is spoken
    Voice,     ///< may change the language or the voice within
    Sentence,  ///< as `Voice`, and is a sentence or more
    Engine,    ///< is left to the engine
    Substitute,
    Silent,  ///< its text is not spoken
    Mark,
    Break,
};

struct NamedMarkupElement {
    std::string_view name;
    MarkupElement element;
};

/// All that are known.
inline constexpr NamedMarkupElement kMarkupElements[] = {
    {"speak", MarkupElement::Sentence},  {"voice", MarkupElement::Voice},
    {"lang", MarkupElement::Voice},      {"p", MarkupElement::Sentence},
    {"s", MarkupElement::Sentence},      {"prosody", MarkupElement::Engine},
    {"emphasis", MarkupElement::Engine}, {"say-as", MarkupElement::Engine},
    {"sub", MarkupElement::Substitute},  {"metadata", MarkupElement::Silent},
    {"desc", MarkupElement::Silent},     {"mark", MarkupElement::Mark},
    {"break", MarkupElement::Break},
};

/// Attributes that the engine gets as they are, of the elements that are left to it.
inline constexpr std::string_view kEngineAttributes[] = {"rate", "pitch", "range", "volume",
                                                         "level"};

MarkupElement elementOf(std::string_view name);

/// The opening tag of an element that is left to the engine, with those of its attributes that an
/// engine knows and can be trusted with.
std::string engineTag(const MarkupTag& tag);

/// The silence that a break asks for, but at most `maxMs` milliseconds.
uint32_t breakMs(const MarkupTag& tag, uint32_t maxMs);

}  // namespace voxtreld

#endif
