// SPDX-License-Identifier: Apache-2.0
#include "service/Speaker.h"

#include <algorithm>
#include <array>

#include "service/MarkupReader.h"
#include "service/Text.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

/// Long enough for whole sentences, short enough that a text of any size costs the engine the same.
constexpr size_t kPieceBytes = 2048;

}  // namespace

void Speaker::run() {
    SpeechQueue::Work work;
    while (mQueue.wait(work)) {
        reportDropped(work.dropped);
        if (work.next) {
            speak(*work.next);
        }
    }
}

void Speaker::reportDropped(const std::vector<SpeechQueue::Dropped>& dropped) {
    for (const SpeechQueue::Dropped& each : dropped) {
        mListener.tell(each.pid, EVENT_STARTED, each.id, 0);
        mListener.tell(each.pid, EVENT_STOPPED, each.id, static_cast<uint32_t>(each.status));
    }
}

void Speaker::speak(const Utterance& utterance) {
    mCurrent = &utterance;
    mStarted = false;
    mSinkFailed = !mSink.begin(utterance.pid, utterance.id);
    mPieceOffset = 0;
    mLastWord.reset();
    mEarly.clear();

    bool good = !mSinkFailed;
    if (good) {
        good = isMarkup(utterance.text) ? speakMarkup(utterance)
               : utterance.text.empty() ? pause(utterance.pauseMs)
                                        : speakText(utterance);
        good = mSink.end(mQueue.cancelled()) && good && !mSinkFailed;
    }
    dropUnheard(good);
    tellStarted();
    if (const auto cancelStatus = mQueue.finish()) {
        tell(EVENT_STOPPED, static_cast<uint32_t>(*cancelStatus));
    } else if (good) {
        tell(EVENT_FINISHED, 0);
    } else {
        tell(EVENT_STOPPED, static_cast<uint32_t>(STATUS_AUDIO_FAILED));
    }
    mCurrent = nullptr;
}

bool Speaker::speakText(const Utterance& utterance) {
    std::string_view rest = utterance.text;
    while (!rest.empty() && !mQueue.cancelled()) {
        const std::string_view piece = rest.substr(0, pieceLength(rest, kPieceBytes));
        if (!mEngine.speak(std::string(piece), utterance.prosody, *this)) {
            return false;
        }
        mPieceOffset += characterCount(piece);
        rest.remove_prefix(piece.size());
    }
    return true;
}

bool Speaker::speakMarkup(const Utterance& utterance) {
    MarkupReader reader(utterance.text, utterance.prosody, mEngine.voices());
    MarkupPiece piece;
    bool good = true;
    while (good && !mSinkFailed && !mQueue.cancelled() && reader.next(piece)) {
        good = speakPiece(piece);
    }
    return good;
}

bool Speaker::speakPiece(const MarkupPiece& piece) {
    mPiece = &piece;
    mMarksTold = 0;
    const bool good = !piece.hasText() || mEngine.speak(piece.document(), piece.prosody, *this);
    if (good && !mSinkFailed && !mQueue.cancelled()) {
        tellMarks(SIZE_MAX);
    }
    mPiece = nullptr;
    return good && pause(piece.pauseMs);
}

bool Speaker::pause(uint32_t milliseconds) {
    constexpr std::array<int16_t, 512> kSilence = {};
    uint64_t left = static_cast<uint64_t>(milliseconds) * mEngine.sampleRate() / 1000;
    while (left > 0) {
        const auto count = static_cast<size_t>(std::min<uint64_t>(left, kSilence.size()));
        if (!samples(kSilence.data(), count)) {
            break;
        }
        left -= count;
    }
    return true;
}

void Speaker::word(size_t offset) {
    if (mPiece == nullptr) {
        tellWhenStarted(EVENT_WORD, static_cast<uint32_t>(mPieceOffset + offset));
        return;
    }
    tellMarks(offset);
    const auto inText = static_cast<uint32_t>(mPiece->sentOffset(offset));
    if (!mLastWord || inText > *mLastWord) {  // several words may stand for one place in the text
        mLastWord = inText;
        tellWhenStarted(EVENT_WORD, inText);
    }
}

/// Tells the marks of the piece that stand before the word at this offset.
void Speaker::tellMarks(size_t upTo) {
    const std::vector<MarkupPiece::Mark>& marks = mPiece->marks();
    for (; mMarksTold < marks.size() && marks[mMarksTold].offset <= upTo; ++mMarksTold) {
        tellWhenStarted(EVENT_MARK, marks[mMarksTold].number);
    }
}

bool Speaker::samples(const int16_t* samples, size_t count) {
    if (mQueue.cancelled()) {
        return false;
    }
    const int16_t* mixed = mMixer.mix(samples, count, mCurrent->gain, mCurrent->backgroundGain);
    mSinkFailed = !mSink.write(mixed, count, mQueue.cancelled());
    tellStarted();  // after the sink has its samples, so that telling does not delay the sound
    reportDropped(mQueue.takeDropped());
    return !mSinkFailed;
}

void Speaker::tellStarted() {
    if (mStarted) {
        return;
    }
    mStarted = true;
    tell(EVENT_STARTED, 0);
    for (const EarlyEvent& early : mEarly) {
        tell(early.event, early.third);
    }
    mEarly.clear();
}

/// A text without sound has no words, but may consist of marks only.
void Speaker::dropUnheard(bool good) {
    const bool keepsMarks = good && !mQueue.cancelled();
    const auto isUnheard = [keepsMarks](const EarlyEvent& early) {
        return !keepsMarks || early.event == EVENT_WORD;
    };
    mEarly.erase(std::remove_if(mEarly.begin(), mEarly.end(), isUnheard), mEarly.end());
}

void Speaker::tellWhenStarted(TTS::Event event, uint32_t third) {
    if (mStarted) {
        tell(event, third);
    } else {
        mEarly.push_back({event, third});
    }
}

void Speaker::tell(TTS::Event event, uint32_t third) {
    mListener.tell(mCurrent->pid, event, mCurrent->id, third);
}

}  // namespace voxtreld
