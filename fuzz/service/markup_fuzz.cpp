// SPDX-License-Identifier: Apache-2.0
// Any text through the service's reader of marked-up text, and through the command line's checker.
// With a first byte of 0xFF the second half of the text stands there again and again: what takes
// more than its share of time or memory does so in long texts, and the fuzzer favours short inputs.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <string>

#include "fuzz/Input.h"
#include "service/MarkupReader.h"
#include "service/Text.h"
#include "tests/markup/Reading.h"
#include "tools/SsmlChecker.h"

namespace {

using voxtrel_fuzz::require;
using voxtreld::characterCount;
using voxtreld::MarkupPiece;
using voxtreld::MarkupReader;

constexpr size_t kLargestDocument = 8192;

/// Many times what it takes, also with the sanitizers.
constexpr double kSecondsAtMost = 0.1;
constexpr double kSecondsAByte = 2e-6;

double processorSeconds() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

std::string textOf(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::string half = text.substr(text.size() / 2);
    const size_t wanted = data[0] < 0xF0 ? 0 : size_t{8} << (data[0] & 0xFU);
    while (!half.empty() && text.size() < wanted) {
        text += half;
    }
    return voxtreld::validUtf8(text);
}

const std::vector<voxtreld::EngineVoice>& voices() {
    static const std::vector<voxtreld::EngineVoice> all = {
        {LANG_EN_US, "one"}, {LANG_EN_US, "two"}, {LANG_FR_FR, "un"}, {LANG_KO_KR, "hana"}};
    return all;
}

/// What is true of all pieces of a text together.
class Pieces {
public:
    explicit Pieces(const std::string& text)
        : mCharacters(characterCount(text)),
          mHasSubstitutes(text.find("alias") != std::string::npos) {
        std::copy_if(text.begin(), text.end(), std::back_inserter(mSource),
                     [](char c) { return !isContinuation(c); });
    }

    void take(const MarkupPiece& piece) {
        require(++mCount <= mCharacters);
        requireVoice(piece.prosody);
        requireDocument(piece.document());
        requireOffsets(piece);
        requireMarks(piece);
        mPauseMs += piece.pauseMs;
        require(piece.pauseMs <= MarkupReader::kLongestBreakMs);
        require(mPauseMs <= MarkupReader::kMaxBreaksMs);
    }

private:
    static void requireVoice(const voxtreld::Prosody& prosody) {
        const auto count = std::count_if(voices().begin(), voices().end(), [&](const auto& voice) {
            return voice.language == prosody.language;
        });
        require(prosody.markup && prosody.voice >= 1 && prosody.voice <= count);
    }

    /// Well-formed, and nothing in it but what engines are trusted with.
    static void requireDocument(const std::string& document) {
        require(document.size() < kLargestDocument);
        require(!voxtrelctl::SsmlChecker(document).check());
        size_t depth = 0;
        for (size_t at = 0; (at = document.find('<', at)) != std::string::npos; ++at) {
            const bool isEnd = document[at + 1] == '/';
            const size_t name = at + (isEnd ? 2 : 1);
            const size_t end = document.find_first_of(" >", name);
            const std::string element = document.substr(name, end - name);
            require(element == "speak" || element == "prosody" || element == "emphasis" ||
                    element == "say-as");
            depth = isEnd ? depth - 1 : depth + 1;
            require(depth <= MarkupReader::kDeepest + 1);  // with the document's own
        }
    }

    /// Of the many characters of a long text, some are enough.
    void requireOffsets(const MarkupPiece& piece) {
        const size_t step = mCharacters < kLargestDocument ? 1 : 61;
        size_t offset = 0;
        char end = '\0';  // of the tag or reference that the character belongs to
        for (const char c : piece.document()) {
            if (isContinuation(c)) {
                continue;
            }
            if (end == '\0') {
                end = c == '<' ? '>' : c == '&' ? ';' : '\0';
            }
            if (offset % step == 0) {
                requireOffset(piece.sentOffset(offset), end == '\0' ? c : '\0');
            }
            end = c == end ? '\0' : end;
            ++offset;
        }
    }

    /// A letter that is spoken stands in the text where it is said to, or a reference to it does.
    void requireOffset(size_t sent, char spoken) {
        require(sent >= mSent && sent <= mCharacters);
        mSent = sent;
        if (std::isalnum(static_cast<unsigned char>(spoken)) != 0 && !mHasSubstitutes) {
            require(sent < mCharacters && (mSource[sent] == spoken || mSource[sent] == '&'));
        }
    }

    static bool isContinuation(char c) { return (static_cast<uint8_t>(c) & 0xC0U) == 0x80U; }

    void requireMarks(const MarkupPiece& piece) {
        size_t last = 0;
        for (const MarkupPiece::Mark& mark : piece.marks()) {
            require(mark.number == ++mMarks && mark.offset >= last);
            require(mark.offset <= characterCount(piece.document()));
            last = mark.offset;
        }
        require(mMarks <= MarkupReader::kMaxMarks);
    }

    const size_t mCharacters;  ///< of the text
    const bool mHasSubstitutes;
    std::string mSource;  ///< the first byte of each
    size_t mCount = 0;
    size_t mSent = 0;
    uint32_t mMarks = 0;
    uint64_t mPauseMs = 0;
};

void requireQuickReading(const std::string& text) {
    const double begun = processorSeconds();
    MarkupReader reader(text, voxtreld::Prosody(), voices());
    for (MarkupPiece piece; reader.next(piece);) {
    }
    const double taken = processorSeconds() - begun;
    require(taken < kSecondsAtMost + kSecondsAByte * static_cast<double>(text.size()));
}

void requireGoodPieces(const std::string& text) {
    Pieces pieces(text);
    MarkupReader reader(text, voxtreld::Prosody(), voices());
    for (MarkupPiece piece; reader.next(piece);) {
        pieces.take(piece);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string text = textOf(data, size);
    requireQuickReading(text);
    requireGoodPieces(text);
    if (!voxtrelctl::SsmlChecker(text).check()) {
        require(voxtrel_test::misreadIn(text).empty());
    }
    return 0;
}
