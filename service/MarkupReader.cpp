// SPDX-License-Identifier: Apache-2.0
#include "service/MarkupReader.h"

#include <algorithm>
#include <utility>

#include "service/MarkupElements.h"
#include "service/Text.h"

namespace voxtreld {
namespace {

constexpr std::string_view kRoot = "<speak";

/// The same as the engine is given of plain text.
constexpr size_t kPieceBytes = 2048;

/// From here on a piece ends with its sentence.
constexpr size_t kEnoughBytes = kPieceBytes / 2;

/// A text that does not fit is not cut into pieces shorter than this.
constexpr size_t kLeastRoom = 256;

constexpr size_t kLongestAlias = 1024;

}  // namespace

bool isMarkup(std::string_view text) {
    return text.size() > kRoot.size() && text.substr(0, kRoot.size()) == kRoot &&
           std::string_view(" \t\r\n/>").find(text[kRoot.size()]) != std::string_view::npos;
}

MarkupReader::MarkupReader(std::string_view text, const Prosody& prosody,
                           std::vector<EngineVoice> voices)
    : mProsody(prosody),
      mVoice{prosody.language, prosody.voice},
      mVoices(std::move(voices)),
      mScanner(text) {
    advance();
}

void MarkupReader::advance() {
    mTokenAt += characterCount(mToken.source);
    mHasToken = mScanner.next(mToken);
    mTextAt = mTokenAt;
    if (mHasToken && !mToken.text.empty()) {
        mTextAt += static_cast<size_t>(mToken.text.data() - mToken.source.data());
    }
}

bool MarkupReader::next(MarkupPiece& piece) {
    if (!mHasToken) {
        return false;
    }
    piece = {};
    piece.prosody = mProsody;
    piece.prosody.markup = true;
    mSentenceEnds = false;
    piece.addTag("<speak>", mTextAt);
    for (const Element& element : mOpen) {
        piece.addTag(element.tag, mTextAt);
    }
    do {
        if (!piece.hasText()) {
            piece.prosody.language = voice().language;
            piece.prosody.voice = voice().number;
        }
    } while (mHasToken && !endsBefore(piece) && takeToken(piece));
    finish(piece);
    return true;
}

void MarkupReader::finish(MarkupPiece& piece) const {
    for (auto element = mOpen.rbegin(); element != mOpen.rend(); ++element) {
        if (!element->tag.empty()) {
            piece.addTag("</" + std::string(element->name) + ">", mTextAt);
        }
    }
    piece.addTag("</speak>", mTextAt);
    piece.prosody.endPause =
        piece.pauseMs == 0 && (!mHasToken || mSentenceEnds || piece.endsSentence());
}

/// True if the next token is to be heard, and is not for the voice of this piece or its sentence.
bool MarkupReader::endsBefore(const MarkupPiece& piece) const {
    const MarkupVoice speaks = {piece.prosody.language, piece.prosody.voice};
    return piece.hasText() && (mSentenceEnds || !(speaks == voice())) && isHeard();
}

bool MarkupReader::isHeard() const {
    if (isSilent()) {
        return false;
    }
    switch (mToken.kind) {
        case MarkupToken::Kind::Text:
            return mToken.text.find_first_not_of(" \t\r\n") != std::string_view::npos;
        case MarkupToken::Kind::Character:
            return true;
        case MarkupToken::Kind::Tag:
            return mToken.tag.opens && elementOf(mToken.tag.name) == MarkupElement::Substitute;
        default:
            return false;
    }
}

/// Takes the next token, or a part of it. @return false if the piece is complete.
bool MarkupReader::takeToken(MarkupPiece& piece) {
    bool goesOn = true;
    switch (mToken.kind) {
        case MarkupToken::Kind::Text:
            return takeText(piece);
        case MarkupToken::Kind::Character:
            if (!isSilent()) {
                piece.addSubstitute(mToken.character, mTokenAt);
            }
            break;
        case MarkupToken::Kind::Tag:
            goesOn = takeTag(piece);
            break;
        default:
            break;
    }
    advance();
    return goesOn && piece.document().size() < kPieceBytes;
}

bool MarkupReader::takeText(MarkupPiece& piece) {
    const size_t used = piece.document().size();
    if (!isSilent()) {
        std::string_view text = mToken.text.substr(0, kPieceBytes);  // the rest is not needed
        text = text.substr(0, used >= kEnoughBytes ? sentenceLength(text) : text.size());
        const size_t room = used < kPieceBytes - kLeastRoom ? kPieceBytes - used : kLeastRoom;
        text = text.substr(0, pieceLength(text, MarkupPiece::fitting(text, room)));
        piece.addText(text, mTextAt);
        mTextAt += characterCount(text);
        mToken.text.remove_prefix(text.size());
    }
    const bool isTaken = isSilent() || mToken.text.empty();
    if (isTaken) {
        advance();
    }
    const size_t size = piece.document().size();
    return isTaken && size < kPieceBytes && !(size >= kEnoughBytes && piece.endsSentence());
}

/// @return false if the piece ends with this tag.
bool MarkupReader::takeTag(MarkupPiece& piece) {
    const MarkupElement kind = elementOf(mToken.tag.name);
    const bool isBorder = kind == MarkupElement::Sentence && piece.hasText() && !isSilent();
    mSentenceEnds = mSentenceEnds || isBorder;
    if (!mToken.tag.opens) {
        close(piece);
        return true;
    }
    switch (kind) {
        case MarkupElement::Mark:
            takeMark(piece);
            return true;
        case MarkupElement::Break:
            return takeBreak(piece);
        case MarkupElement::Unknown:
            return true;
        default:
            open(piece);
            return true;
    }
}

void MarkupReader::takeMark(MarkupPiece& piece) {
    if (mMarks < kMaxMarks) {
        piece.addMark(++mMarks);
    }
}

bool MarkupReader::takeBreak(MarkupPiece& piece) {
    if (isSilent()) {
        return true;
    }
    const uint32_t left = kMaxBreaksMs - mBreaksMs;
    piece.pauseMs = breakMs(mToken.tag, std::min(left, kLongestBreakMs));
    mBreaksMs += piece.pauseMs;
    return piece.pauseMs == 0;
}

void MarkupReader::open(MarkupPiece& piece) {
    const MarkupTag& tag = mToken.tag;
    const MarkupElement kind = elementOf(tag.name);
    const size_t behind = mTokenAt + characterCount(mToken.source);
    const bool isSubstitute = kind == MarkupElement::Substitute;
    if (isSubstitute && !isSilent()) {
        const std::string_view alias = attributeOf(tag, "alias");
        MarkupScanner scanner(alias.substr(0, pieceLength(alias, kLongestAlias)));
        for (MarkupToken token; scanner.next(token);) {
            piece.addSubstitute(token.character.empty() ? token.text : token.character, behind);
        }
    }
    if (tag.closes) {
        return;
    }
    if (mOpen.size() >= kDeepest) {
        ++mTooDeep;
        return;
    }
    const bool hidesText = isSubstitute || kind == MarkupElement::Silent;
    Element element = {tag.name, "", mVoices.within(tag, voice()), hidesText || isSilent()};
    if (kind == MarkupElement::Engine) {
        element.tag = engineTag(tag);
        piece.addTag(element.tag, behind);
    }
    mOpen.push_back(std::move(element));
}

/// How many elements stay open after a closing tag; one without a match closes nothing.
size_t MarkupReader::depthAfterClosing(std::string_view name) const {
    if (mTooDeep > 0) {
        return mOpen.size();
    }
    for (size_t depth = mOpen.size(); depth > 0; --depth) {
        if (mOpen[depth - 1].name == name) {
            return depth - 1;
        }
    }
    return mOpen.size();
}

void MarkupReader::close(MarkupPiece& piece) {
    const std::string_view name = mToken.tag.name;
    const MarkupElement kind = elementOf(name);
    const bool isOpened = kind != MarkupElement::Unknown && kind != MarkupElement::Mark &&
                          kind != MarkupElement::Break;
    const size_t depth = depthAfterClosing(name);
    mTooDeep -= isOpened && mTooDeep > 0 ? 1 : 0;
    for (; mOpen.size() > depth; mOpen.pop_back()) {
        if (!mOpen.back().tag.empty()) {
            piece.addTag("</" + std::string(mOpen.back().name) + ">",
                         mTokenAt + characterCount(mToken.source));
        }
    }
}

}  // namespace voxtreld
