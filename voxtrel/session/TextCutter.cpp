// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/TextCutter.h"

#include <algorithm>

namespace voxtrel {
namespace {

bool continues(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool isBlank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

bool endsSentence(char byte) {
    return byte == '.' || byte == '!' || byte == '?' || byte == ';';
}

constexpr std::string_view kMarkup = "<speak";

/// A form of UTF-8: first byte from `low` to `high`, then `more` bytes, of which the second is
/// limited by what is neither a surrogate, too long a form nor too large.
struct Form {
    unsigned char low;
    unsigned char high;
    unsigned char more;
    unsigned char secondLow;
    unsigned char secondHigh;
};

constexpr Form kForms[] = {
    {0x00, 0x7F, 0, 0, 0},       {0xC2, 0xDF, 1, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0xA0, 0xBF},
    {0xE1, 0xEC, 2, 0x80, 0xBF}, {0xED, 0xED, 2, 0x80, 0x9F}, {0xEE, 0xEF, 2, 0x80, 0xBF},
    {0xF0, 0xF0, 3, 0x90, 0xBF}, {0xF1, 0xF3, 3, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x80, 0x8F},
};

/// Bytes of the character at the beginning of `text`, 0 if it is none.
std::size_t lengthOfFirst(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    for (const Form& form : kForms) {
        if (first < form.low || first > form.high) {
            continue;
        }
        if (text.size() <= form.more) {
            return 0;
        }
        for (std::size_t n = 1; n <= form.more; ++n) {
            const auto byte = static_cast<unsigned char>(text[n]);
            const unsigned char low = n == 1 ? form.secondLow : 0x80;
            const unsigned char high = n == 1 ? form.secondHigh : 0xBF;
            if (byte < low || byte > high) {
                return 0;
            }
        }
        return form.more + 1;
    }
    return 0;
}

}  // namespace

bool isMarkedUp(std::string_view text) {
    constexpr std::string_view kEndsOfName = " \t\r\n/>";
    return text.size() > kMarkup.size() && text.substr(0, kMarkup.size()) == kMarkup &&
           kEndsOfName.find(text[kMarkup.size()]) != std::string_view::npos;
}

std::size_t nextPiece(std::string_view text) {
    if (text.size() <= kPieceBytes) {
        return text.size();
    }
    std::size_t sentence = 0;
    std::size_t line = 0;
    std::size_t word = 0;
    for (std::size_t end = 1; end <= kPieceBytes; ++end) {
        if (!isBlank(text[end - 1]) || isMarkedUp(text.substr(end))) {
            continue;
        }
        word = end;
        line = text[end - 1] == '\n' ? end : line;
        sentence = end > 1 && endsSentence(text[end - 2]) ? end : sentence;
    }
    for (const std::size_t end : {sentence, line, word}) {
        if (end > 0) {
            return end;
        }
    }
    std::size_t end = kPieceBytes;
    while (end > 1 && (continues(text[end]) || isMarkedUp(text.substr(end)))) {
        --end;
    }
    return end;
}

std::size_t countCharacters(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return !continues(byte); }));
}

Position advance(std::string_view text, Position from, std::size_t characters) {
    const std::size_t wanted = from.characters + characters;
    while (from.bytes < text.size() && from.characters < wanted) {
        ++from.bytes;
        while (from.bytes < text.size() && continues(text[from.bytes])) {
            ++from.bytes;
        }
        ++from.characters;
    }
    return from;
}

std::optional<std::size_t> firstInvalidByte(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = lengthOfFirst(text.substr(at));
        if (length == 0) {
            return at;
        }
        at += length;
    }
    return std::nullopt;
}

}  // namespace voxtrel
