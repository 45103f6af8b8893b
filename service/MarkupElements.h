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

MarkupElement elementOf(std::string_view name);

/// The opening tag of an element that is left to the engine, with those of its attributes that an
/// engine knows and can be trusted with.
std::string engineTag(const MarkupTag& tag);

/// The silence that a break asks for; any number of milliseconds above `most` is `most`.
uint32_t breakMs(const MarkupTag& tag, uint32_t most);

}  // namespace voxtreld

#endif
