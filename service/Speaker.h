// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_SPEAKER_H
#define VOXTREL_SERVICE_SPEAKER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "service/Engine.h"
#include "service/Listener.h"
#include "service/MarkupPiece.h"
#include "service/Mixer.h"
#include "service/Sink.h"
#include "service/SpeechQueue.h"

namespace voxtreld {

/// Turns utterances of the queue into sound and events. All events about accepted utterances come
/// from here, in order.
///
/// Called on: the speech thread. The parts it is given outlive it.
class Speaker : private SpeechReceiver {
public:
    Speaker(Engine& engine, Sink& sink, Mixer& mixer, SpeechQueue& queue, Listener& listener)
        : mEngine(engine), mSink(sink), mMixer(mixer), mQueue(queue), mListener(listener) {}

    /// Speaks until the queue is closed and its last event has been reported.
    void run();

private:
    struct EarlyEvent {
        TTS::Event event;
        uint32_t third;
    };

    void word(size_t offset) override;
    bool samples(const int16_t* samples, size_t count) override;

    void reportDropped(const std::vector<SpeechQueue::Dropped>& dropped);
    void speak(const Utterance& utterance);
    bool speakText(const Utterance& utterance);
    bool speakMarkup(const Utterance& utterance);
    bool speakPiece(const MarkupPiece& piece);
    bool pause(uint32_t milliseconds);
    void tellStarted();
    void dropUnheard(bool good);
    void tellMarks(size_t upTo);
    void tellWhenStarted(TTS::Event event, uint32_t third);
    void tell(TTS::Event event, uint32_t third);

    Engine& mEngine;
    Sink& mSink;
    Mixer& mMixer;
    SpeechQueue& mQueue;
    Listener& mListener;

    // Of the utterance that sounds.
    const Utterance* mCurrent = nullptr;
    bool mStarted = false;
    bool mSinkFailed = false;
    size_t mPieceOffset = 0;              ///< characters before the piece that the engine has
    const MarkupPiece* mPiece = nullptr;  ///< that the engine has, of a marked-up text
    size_t mMarksTold = 0;                ///< of the piece
    std::optional<uint32_t> mLastWord;    ///< of a marked-up text
    std::vector<EarlyEvent> mEarly;       ///< before the first sample
};

}  // namespace voxtreld

#endif
