// SPDX-License-Identifier: Apache-2.0
#include "service/MarkupPiece.h"

#include <algorithm>
#include <iterator>

#include "service/Text.h"

namespace voxtreld {
namespace {

/// A character as a document holds it.
std::string escaped(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        default:
            return {static_cast<uint8_t>(c) < 0x20 ? ' ' : c};
    }
}

}  // namespace

size_t MarkupPiece::fitting(std::string_view text, size_t room) {
    size_t bytes = 0;
    size_t written = 0;
    while (bytes < text.size() && (written += escaped(text[bytes]).size()) <= room) {
        ++bytes;
    }
    return bytes;
}

void MarkupPiece::addText(std::string_view text, size_t sent) {
    size_t begin = 0;
    while (begin < text.size()) {
        const size_t special = std::min(text.find_first_of("&<>", begin), text.size());
        if (special > begin) {
            const std::string_view plain = text.substr(begin, special - begin);
            beginRun(sent, Run::Kind::Verbatim);
            for (const char c : plain) {
                mDocument += escaped(c);
                mLastLetter = static_cast<uint8_t>(c) > ' ' ? c : mLastLetter;
            }
            mCharacters += characterCount(plain);
            sent += characterCount(plain);
        }
        if (special < text.size()) {
            addSubstitute(text.substr(special, 1), sent++);
        }
        begin = special + 1;
    }
}

void MarkupPiece::addSubstitute(std::string_view text, size_t sent) {
    beginRun(sent, Run::Kind::Substitute);
    for (const char c : text) {
        const std::string written = escaped(c);
        mDocument += written;
        mCharacters += written.size() > 1 ? written.size() : characterCount(written);
        mLastLetter = static_cast<uint8_t>(c) > ' ' ? c : mLastLetter;
    }
}

void MarkupPiece::addTag(const std::string& tag, size_t sent) {
    beginRun(sent, Run::Kind::Tag);
    mDocument += tag;
    mCharacters += characterCount(tag);
}

bool MarkupPiece::endsSentence() const {
    return mLastLetter == '.' || mLastLetter == '?' || mLastLetter == '!';
}

size_t MarkupPiece::sentOffset(size_t offset) const {
    const auto next =
        std::upper_bound(mRuns.begin(), mRuns.end(), offset,
                         [](size_t wanted, const Run& run) { return wanted < run.offset; });
    if (next == mRuns.begin()) {
        return 0;
    }
    const auto run = std::prev(next);
    if (run->kind == Run::Kind::Verbatim) {
        return run->sent + offset - run->offset;
    }
    const auto isText = [](const Run& each) { return each.kind != Run::Kind::Tag; };
    const auto text = std::find_if(run, mRuns.end(), isText);
    return text == mRuns.end() ? run->sent : text->sent;
}

}  // namespace voxtreld
