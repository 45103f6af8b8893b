// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_UTF8_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace sd_voxtrel {

/// The bytes of the character at the begin of the text; 0 if it begins with none.
std::size_t characterLength(std::string_view text);

/// A code point as its bytes.
std::string utf8Of(std::uint32_t point);

}  // namespace sd_voxtrel

#endif
