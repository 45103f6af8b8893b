// SPDX-License-Identifier: Apache-2.0
#include "tools/Text.h"

#include <algorithm>

namespace voxtrelctl {
namespace {

constexpr const char* kWhite = " \t\r\n\f\v";

std::size_t endOfWord(const std::string& text, std::size_t byte) {
    const std::string ends = std::string(kWhite) + (isMarkedUp(text) ? "<" : "");
    const std::size_t word = std::min(text.find_first_not_of(kWhite, byte), text.size());
    return std::min(text.find_first_of(ends, word), text.size());
}

}  // namespace

bool isBlank(const std::string& text) {
    return text.find_first_not_of(kWhite) == std::string::npos;
}

bool isMarkedUp(const std::string& text) {
    constexpr size_t kRootLength = 6;
    return text.size() > kRootLength && text.compare(0, kRootLength, "<speak") == 0 &&
           std::string("/> \t\r\n").find(text[kRootLength]) != std::string::npos;
}

std::string forTerminal(std::string text) {
    for (size_t at = 0; at < text.size(); ++at) {
        const auto value = static_cast<unsigned char>(text[at]);
        if ((value < 0x20U && text[at] != '\n' && text[at] != '\t') || value == 0x7FU) {
            text[at] = ' ';
        }
        // U+0080 to U+009F steer a terminal as well.
        if (value >= 0x80U && value <= 0x9FU && at > 0 && text[at - 1] == '\xC2') {
            text.replace(at - 1, 2, "  ");
        }
    }
    return text;
}

std::string wordAt(const std::string& text, std::size_t byte) {
    const std::size_t begin = std::min(text.find_first_not_of(kWhite, byte), text.size());
    return text.substr(begin, endOfWord(text, begin) - begin);
}

std::string WordCursor::advanceTo(std::size_t byte) {
    const std::size_t end = endOfWord(mText, byte);
    if (end <= mDone) {
        return "";
    }
    std::string spoken = mText.substr(mDone, end - mDone);
    mDone = end;
    return spoken;
}

std::string WordCursor::rest() {
    std::string left = mText.substr(mDone);
    mDone = mText.size();
    return left;
}

}  // namespace voxtrelctl
