// SPDX-License-Identifier: Apache-2.0
#include "tools/Text.h"

#include <algorithm>

namespace voxtrelctl {
namespace {

constexpr const char* kWhite = " \t\r\n\f\v";

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool isWhite(char byte) {
    return std::string(kWhite).find(byte) != std::string::npos;
}

/// The first byte after the last sentence that ends in [begin, end), or `begin`.
size_t afterSentence(const std::string& text, size_t begin, size_t end) {
    for (size_t at = end - 1; at > begin; --at) {
        if (isWhite(text[at]) && std::string(".!?\n").find(text[at - 1]) != std::string::npos) {
            return at + 1;
        }
    }
    return begin;
}

size_t afterWhite(const std::string& text, size_t begin, size_t end) {
    const size_t white = text.find_last_of(kWhite, end - 1);
    return white == std::string::npos || white < begin ? begin : white + 1;
}

size_t beforeCharacter(const std::string& text, size_t begin, size_t end) {
    size_t cut = end;
    while (cut > begin && end - cut < 3 && isContinuation(text[cut])) {
        --cut;
    }
    return cut == begin || isContinuation(text[cut]) ? end : cut;
}

size_t cutAt(const std::string& text, size_t begin, size_t most) {
    const size_t end = begin + most;
    if (end >= text.size()) {
        return text.size();
    }
    for (const auto find : {&afterSentence, &afterWhite}) {
        const size_t cut = find(text, begin, end);
        if (cut > begin) {
            return cut;
        }
    }
    return beforeCharacter(text, begin, end);
}

}  // namespace

std::vector<std::string> cutIntoPieces(std::string text, size_t most) {
    std::replace(text.begin(), text.end(), '\0', ' ');
    std::vector<std::string> pieces;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = cutAt(text, begin, most);
        std::string piece = text.substr(begin, end - begin);
        if (piece.find_first_not_of(kWhite) != std::string::npos) {
            pieces.push_back(std::move(piece));
        }
        begin = end;
    }
    return pieces;
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

WordCursor::WordCursor(std::string text) : mText(std::move(text)), mEnds(kWhite) {
    if (isMarkedUp(mText)) {
        mEnds += '<';
    }
}

size_t WordCursor::byteOf(uint32_t offset) const {
    size_t byte = 0;
    for (uint32_t character = 0; character < offset && byte < mText.size(); ++character) {
        for (++byte; byte < mText.size() && isContinuation(mText[byte]); ++byte) {
        }
    }
    return byte;
}

size_t WordCursor::endOfWord(size_t byte) const {
    const size_t word = std::min(mText.find_first_not_of(kWhite, byte), mText.size());
    return std::min(mText.find_first_of(mEnds, word), mText.size());
}

std::string WordCursor::advanceTo(uint32_t offset) {
    const size_t end = endOfWord(byteOf(offset));
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

std::string WordCursor::wordAt(uint32_t offset) const {
    const size_t begin = std::min(mText.find_first_not_of(kWhite, byteOf(offset)), mText.size());
    return mText.substr(begin, endOfWord(begin) - begin);
}

}  // namespace voxtrelctl
