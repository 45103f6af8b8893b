// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_MARKUPPIECE_H
#define VOXTREL_SERVICE_MARKUPPIECE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "service/Engine.h"

namespace voxtreld {

/// A part of a marked-up text that an engine speaks at one go, as a small document of its own, and
/// where its characters stand in the text that was sent. All offsets are in characters.
///
/// Called on: one thread at a time. Locks: none.
class MarkupPiece {
public:
    /// A mark that is reached when the voice comes to a character of the document.
    struct Mark {
        size_t offset;
        uint32_t number;
    };

    Prosody prosody;       ///< of the document
    uint32_t pauseMs = 0;  ///< of silence that follow it

    /// How many bytes of the text, at least a fifth of `room`, take no more than `room` in a
    /// document.
    static size_t fitting(std::string_view text, size_t room);

    /// Appends text as it stands in the sent text from `sent` on.
    void addText(std::string_view text, size_t sent);

    /// Appends text that stands for what is at `sent`.
    void addSubstitute(std::string_view text, size_t sent);

    /// Appends a tag that stands before what is at `sent`.
    void addTag(const std::string& tag, size_t sent);
    void addMark(uint32_t number) { mMarks.push_back({mCharacters, number}); }

    const std::string& document() const { return mDocument; }
    const std::vector<Mark>& marks() const { return mMarks; }

    /// False where an engine has nothing to speak.
    bool hasText() const { return mLastLetter != '\0'; }

    /// True if its text ends a sentence by its last character.
    bool endsSentence() const;

    /// Where a character of the document stands in the text that was sent; for one of a tag, where
    /// the text behind it stands.
    size_t sentOffset(size_t offset) const;

private:
    /// A stretch of the document, up to the next one.
    struct Run {
        enum class Kind {
            Verbatim,    ///< stands at `sent` and on, character for character
            Substitute,  ///< stands for what is at `sent`
            Tag,         ///< belongs to the text behind it
        };
        size_t offset;
        size_t sent;
        Kind kind;
    };

    void beginRun(size_t sent, Run::Kind kind) { mRuns.push_back({mCharacters, sent, kind}); }

    std::string mDocument;
    size_t mCharacters = 0;  ///< of the document
    std::vector<Run> mRuns;
    std::vector<Mark> mMarks;
    char mLastLetter = '\0';  ///< the last byte of text that is no blank
};

}  // namespace voxtreld

#endif
