// SPDX-License-Identifier: Apache-2.0
// What the queue makes of utterances that are lost.
#include "voxtrel/session/SpeechQueue.h"

#include <new>

namespace voxtrel {

using Kind = Outcome::Kind;

/// Something sent later is being spoken: of what comes before, nothing more will be told.
void SpeechQueue::passed(std::uint32_t number) {
    const std::shared_ptr<Speech> current = find(number)->speech;
    std::size_t before = 0;
    for (; mInFlight[before].number != number; ++before) {
        InFlight& sent = mInFlight[before];
        // A piece that began and is followed by the next has been spoken.
        if (current != nullptr && sent.hasStarted && sent.speech == current) {
            forgetPiece(sent);
        }
    }
    loseFirst(before, Status::Lost);
    while (mInFlight.front().number != number) {
        remove(mInFlight.front().number);
    }
}

void SpeechQueue::lose(Status status) {
    loseFirst(mInFlight.size(), status);
    if (const std::shared_ptr<Speech> begun = mPartlySent) {
        lose(begun, status);
    }
    mInFlight.clear();
    mBytes = 0;
    mUnanswered = 0;
    mHasAnswered = false;
    mClosed = {};
    mOwesFence = false;
    mOwesFlush = false;
}

/// What is told of goes from the first to the last, and what is said again comes before the rest in
/// the same order. Takes no memory but for that.
void SpeechQueue::loseFirst(std::size_t count, Status status) {
    for (std::size_t n = 0; n < count; ++n) {
        if (mInFlight[n].speech != nullptr) {
            mInFlight[n].speech->heard = mInFlight[n].speech->heard || mInFlight[n].hasStarted;
        }
    }
    const auto loseAt = [&](std::size_t place) {
        const std::shared_ptr<Speech> speech = mInFlight[place].speech;
        for (std::size_t n = 0; n < count; ++n) {
            if (mInFlight[n].speech == speech) {
                forgetPiece(mInFlight[n]);
            }
        }
        lose(speech, status);
    };
    for (std::size_t n = 0; n < count; ++n) {
        if (mInFlight[n].speech != nullptr && !mayRepeat(*mInFlight[n].speech)) {
            loseAt(n);
        }
    }
    for (std::size_t n = count; n-- > 0;) {
        if (mInFlight[n].speech != nullptr) {
            loseAt(n);
        }
    }
}

void SpeechQueue::lose(const std::shared_ptr<Speech>& speech, Status status) {
    if (speech->isStopped) {
        end(speech, {Kind::Stopped, Status::Ok, speech->heard, speech->stopper});
    } else if (!mayRepeat(*speech) || !repeat(speech)) {
        end(speech, {Kind::Lost, status, speech->heard});
    }
}

bool SpeechQueue::mayRepeat(const Speech& speech) {
    const OnLoss choice = speech.onLoss();
    const bool isWanted =
        choice == OnLoss::SayAgainWhatever || (choice == OnLoss::SayAgain && !speech.heard);
    return isWanted && !speech.isStopped && !speech.wasRepeated;
}

/// False where there is no memory for it.
bool SpeechQueue::repeat(const std::shared_ptr<Speech>& speech) {
    try {
        mWaiting.addFirst(speech);
    } catch (const std::bad_alloc&) {
        return false;
    }
    detach(speech);
    speech->sent = {};
    speech->open = 0;
    speech->isCut = false;
    speech->wasRepeated = true;
    speech->state->moveTo({});
    return true;
}

/// Nothing more will be told of it.
void SpeechQueue::forgetPiece(InFlight& sent) {
    sent.speech->heard = sent.speech->heard || sent.hasStarted;
    --sent.speech->open;
    sent.speech = nullptr;
}

}  // namespace voxtrel
