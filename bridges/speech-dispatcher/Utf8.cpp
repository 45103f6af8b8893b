// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Utf8.h"

namespace sd_voxtrel {
namespace {

/// The first bytes of characters of one length, and what their second byte may be.
struct Lead {
    std::uint8_t first, last;
    std::uint8_t secondFirst, secondLast;
    std::size_t length;
};

// Overlong forms, surrogates and what is beyond U+10FFFF are left out by the second byte.
constexpr Lead kLeads[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool isWithin(char byte, std::uint8_t first, std::uint8_t last) {
    const auto value = static_cast<std::uint8_t>(byte);
    return value >= first && value <= last;
}

bool isWhole(std::string_view text, const Lead& lead) {
    if (text.size() < lead.length) {
        return false;
    }
    for (std::size_t at = 1; at < lead.length; ++at) {
        const bool isSecond = at == 1;
        if (!isWithin(text[at], isSecond ? lead.secondFirst : 0x80,
                      isSecond ? lead.secondLast : 0xBF)) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::size_t characterLength(std::string_view text) {
    for (const Lead& lead : kLeads) {
        if (!text.empty() && isWithin(text.front(), lead.first, lead.last)) {
            return isWhole(text, lead) ? lead.length : 0;
        }
    }
    return 0;
}

std::string utf8Of(std::uint32_t point) {
    const auto tail = [point](unsigned shift) {
        return static_cast<char>(0x80U | ((point >> shift) & 0x3FU));
    };
    if (point < 0x80) {
        return {static_cast<char>(point)};
    }
    if (point < 0x800) {
        return {static_cast<char>(0xC0U | (point >> 6U)), tail(0)};
    }
    if (point < 0x10000) {
        return {static_cast<char>(0xE0U | (point >> 12U)), tail(6), tail(0)};
    }
    return {static_cast<char>(0xF0U | (point >> 18U)), tail(12), tail(6), tail(0)};
}

}  // namespace sd_voxtrel
