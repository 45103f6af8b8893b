// SPDX-License-Identifier: Apache-2.0
#include "service/Speaker.h"

#include <algorithm>
#include <array>

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
    mEarlyWords.clear();

    bool good = !mSinkFailed;
    if (good) {
        good = utterance.text.empty() ? pause(utterance.pauseMs) : speakText(utterance);
        good = mSink.end(mQueue.cancelled()) && good && !mSinkFailed;
    }
    mEarlyWords.clear();  // without a sample nobody heard them
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
    const auto inText = static_cast<uint32_t>(mPieceOffset + offset);
    if (mStarted) {
        tell(EVENT_WORD, inText);
    } else {
        mEarlyWords.push_back(inText);
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
    for (const uint32_t offset : mEarlyWords) {
        tell(EVENT_WORD, offset);
    }
    mEarlyWords.clear();
}

void Speaker::tell(TTS::Event event, uint32_t third) {
    mListener.tell(mCurrent->pid, event, mCurrent->id, third);
}

}  // namespace voxtreld
