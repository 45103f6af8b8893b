// SPDX-License-Identifier: Apache-2.0
#include "service/Text.h"

#include <cstdint>

namespace voxtreld {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

uint8_t byteAt(std::string_view text, size_t position) {
    return position < text.size() ? static_cast<uint8_t>(text[position]) : 0;
}

bool isContinuation(uint8_t byte) {
    return (byte & 0xC0U) == 0x80U;
}

/// What a lead byte allows: the length of the character, and the range of its second byte (which
/// is what keeps out overlong forms, surrogates and values beyond the last code point).
struct Lead {
    uint8_t first, last;
    uint8_t length;
    uint8_t secondMin, secondMax;
};

constexpr Lead kLeads[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

/// Length of the valid character at `position`, or 0.
size_t validLength(std::string_view text, size_t position) {
    const uint8_t lead = byteAt(text, position);
    if (lead < 0x80) {
        return 1;
    }
    for (const Lead& row : kLeads) {
        if (lead < row.first || lead > row.last) {
            continue;
        }
        const uint8_t second = byteAt(text, position + 1);
        bool valid = second >= row.secondMin && second <= row.secondMax;
        for (size_t i = 2; i < row.length; ++i) {
            valid = valid && isContinuation(byteAt(text, position + i));
        }
        return valid ? row.length : 0;
    }
    return 0;
}

/// The first byte that belongs to no valid character, or the size.
size_t firstInvalid(std::string_view text) {
    size_t position = 0;
    while (position < text.size()) {
        const size_t length = validLength(text, position);
        if (length == 0) {
            break;
        }
        position += length;
    }
    return position;
}

bool isBlank(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

bool endsSentence(std::string_view text, size_t end) {
    const char last = text[end - 1];
    const bool followed = end == text.size() || isBlank(text[end]);
    return last == '\n' || (followed && (last == '.' || last == '?' || last == '!'));
}

}  // namespace

std::string validUtf8(std::string text) {
    size_t position = firstInvalid(text);
    if (position == text.size()) {
        return text;
    }
    std::string valid = text.substr(0, position);
    while (position < text.size()) {
        const size_t length = validLength(text, position);
        if (length == 0) {
            valid += kReplacement;
            ++position;
        } else {
            valid.append(text, position, length);
            position += length;
        }
    }
    return valid;
}

size_t characterCount(std::string_view text) {
    size_t count = 0;
    for (const char c : text) {
        count += isContinuation(static_cast<uint8_t>(c)) ? 0 : 1;
    }
    return count;
}

size_t pieceLength(std::string_view text, size_t limit) {
    if (text.size() <= limit) {
        return text.size();
    }
    size_t blank = 0;
    for (size_t end = limit; end > 0; --end) {
        if (endsSentence(text, end)) {
            return end;
        }
        if (blank == 0 && isBlank(text[end - 1])) {
            blank = end;
        }
    }
    if (blank != 0) {
        return blank;
    }
    size_t end = limit;
    while (end > 1 && isContinuation(static_cast<uint8_t>(text[end]))) {
        --end;
    }
    return end;
}

size_t sentenceLength(std::string_view text) {
    size_t end = text.empty() ? 0 : 1;
    while (end < text.size() && !endsSentence(text, end)) {
        ++end;
    }
    return end;
}

}  // namespace voxtreld
