// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_MARKUPVOICES_H
#define VOXTREL_SERVICE_MARKUPVOICES_H

#include <cstdint>
#include <utility>
#include <vector>

#include "service/Engine.h"
#include "service/MarkupScanner.h"

namespace voxtreld {

/// The voice of a part of a marked-up text.
struct MarkupVoice {
    EN_VOXTREL_LANGUAGE language;
    uint32_t number;  ///< within the language, from 1

    bool operator==(const MarkupVoice& other) const {
        return language == other.language && number == other.number;
    }
};

/// The voices that a marked-up text may choose from.
class MarkupVoices {
public:
    /// @param voices as `Engine::voices` gives them.
    explicit MarkupVoices(std::vector<EngineVoice> voices) : mVoices(std::move(voices)) {}

    /// The voice within an element: that of the attribute `xml:lang`, and of `variant` (a number)
    /// or `name` of a `voice` element; what names none that there is changes nothing.
    ///
    /// @param around the voice around the element.
    MarkupVoice within(const MarkupTag& tag, MarkupVoice around) const;

private:
    uint32_t count(EN_VOXTREL_LANGUAGE language) const;

    const std::vector<EngineVoice> mVoices;
};

}  // namespace voxtreld

#endif
