// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_MARKUPREADER_H
#define VOXTREL_SERVICE_MARKUPREADER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "service/Engine.h"
#include "service/MarkupPiece.h"
#include "service/MarkupScanner.h"
#include "service/MarkupVoices.h"

namespace voxtreld {

/// True for a text that is marked up: it begins with the tag "<speak".
bool isMarkup(std::string_view text);

/// Turns a marked-up text (SSML) into pieces that an engine can be trusted with: short documents in
/// one voice, of a few known elements that are balanced, hold short plain values and are not deep.
///
/// Any input is accepted: unknown elements and markup that is not well-formed are skipped, and
/// their text is spoken. External references are never opened. A piece takes time and memory in
/// proportion to its own part of the text only.
///
/// Called on: one thread at a time. The text must outlive the reader.
class MarkupReader {
public:
    static constexpr size_t kDeepest = 16;         ///< elements within deeper ones are passed over
    static constexpr uint32_t kMaxMarks = 10'000;  ///< later ones are passed over
    static constexpr uint32_t kLongestBreakMs = 60'000;
    static constexpr uint32_t kMaxBreaksMs = 600'000;  ///< of one text; then there are no more

    /// @param text valid UTF-8.
    /// @param prosody where the text says nothing else.
    /// @param voices those that the text may choose from, as `Engine::voices` gives them.
    MarkupReader(std::string_view text, const Prosody& prosody, std::vector<EngineVoice> voices);

    /// @return false at the end of the text.
    bool next(MarkupPiece& piece);

private:
    struct Element {
        std::string_view name;
        std::string tag;    ///< as the engine gets it; empty for what it does not know
        MarkupVoice voice;  ///< within
        bool isSilent;      ///< its text is not spoken
    };

    void advance();
    bool endsBefore(const MarkupPiece& piece) const;
    bool isHeard() const;
    bool takeToken(MarkupPiece& piece);
    bool takeText(MarkupPiece& piece);
    bool takeTag(MarkupPiece& piece);
    bool takeBreak(MarkupPiece& piece);
    void takeMark(MarkupPiece& piece);
    void open(MarkupPiece& piece);
    void close(MarkupPiece& piece);
    void finish(MarkupPiece& piece) const;

    MarkupVoice voice() const { return mOpen.empty() ? mVoice : mOpen.back().voice; }
    size_t depthAfterClosing(std::string_view name) const;
    bool isSilent() const { return !mOpen.empty() && mOpen.back().isSilent; }

    const Prosody mProsody;
    const MarkupVoice mVoice;
    const MarkupVoices mVoices;
    MarkupScanner mScanner;
    MarkupToken mToken;  ///< the next to be taken
    bool mHasToken = true;
    size_t mTokenAt = 0;  ///< where it stands, in characters
    size_t mTextAt = 0;   ///< where the rest of its text stands
    std::vector<Element> mOpen;
    bool mSentenceEnds = false;  ///< the piece has met the border of a sentence
    size_t mTooDeep = 0;         ///< open elements that are passed over
    uint32_t mMarks = 0;
    uint32_t mBreaksMs = 0;
};

}  // namespace voxtreld

#endif
