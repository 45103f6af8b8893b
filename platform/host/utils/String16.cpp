// SPDX-License-Identifier: Apache-2.0
#include "utils/String16.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace android {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Lead {
    size_t length;    // bytes of the sequence, 0 when the byte cannot lead one
    uint32_t bits;    // what the lead itself contributes
    char32_t lowest;  // below this the sequence is longer than it needs to be
};

Lead leadOf(uint8_t byte) {
    if (byte < 0x80) {
        return {1, byte, 0};
    }
    if ((byte & 0xE0) == 0xC0) {
        return {2, byte & 0x1FU, 0x80};
    }
    if ((byte & 0xF0) == 0xE0) {
        return {3, byte & 0x0FU, 0x800};
    }
    if ((byte & 0xF8) == 0xF0) {
        return {4, byte & 0x07U, 0x10000};
    }
    return {0, 0, 0};
}

bool isScalar(char32_t c, char32_t lowest) {
    return c >= lowest && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

// Takes one character off the front of `text`, or one byte of what is not one.
char32_t takeCharacter(std::string_view& text) {
    const Lead lead = leadOf(static_cast<uint8_t>(text.front()));
    char32_t c = lead.bits;
    size_t used = 1;
    while (used < lead.length && used < text.size() &&
           (static_cast<uint8_t>(text[used]) & 0xC0) == 0x80) {
        c = (c << 6) | (static_cast<uint8_t>(text[used]) & 0x3FU);
        ++used;
    }
    const bool good = lead.length != 0 && used == lead.length && isScalar(c, lead.lowest);
    text.remove_prefix(good ? used : 1);
    return good ? c : kReplacement;
}

std::u16string widen(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const char32_t c = takeCharacter(text);
        if (c < 0x10000) {
            out.push_back(static_cast<char16_t>(c));
        } else {
            out.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        }
    }
    return out;
}

}  // namespace

String16::String16(const char* text) : mText(widen(text)) {}

String16::String16(const char* text, size_t length) : mText(widen({text, length})) {}

}  // namespace android
