// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_INTERNAL_FILTERTEXT_H
#define VOXTREL_CLIENT_INTERNAL_FILTERTEXT_H

#include <optional>
#include <string>

#include "vocabulary/Capabilities.h"

namespace TTS {

/// One item of the device's filter of languages and voices: "code.voice", "code.none".
struct FilterItem {
    std::string code;
    std::string voice;
};

/// What a filter says about a voice.
struct VoiceInFilter {
    bool isRestricted = false;       ///< an item is about its language
    std::optional<FilterItem> item;  ///< the first that names it

    bool isUsable() const { return !isRestricted || item.has_value(); }
};

/// The filter of this device. Empty: nothing is taken away.
std::string deviceFilter();

/// Looks a voice up in a filter. These print nothing.
VoiceInFilter findVoice(const std::string& filter, const VoiceInfo& voice);

/// The item that takes the whole language away, if there is one.
std::optional<FilterItem> findRemoval(const std::string& filter, EN_VOXTREL_LANGUAGE language);

}  // namespace TTS

#endif
