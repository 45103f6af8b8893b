// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/SpeechQueue.h"

#include <algorithm>

#include "vocabulary/Events.h"
#include "voxtrel/session/TextCutter.h"

namespace voxtrel {

using Kind = Outcome::Kind;

void SpeechQueue::add(std::shared_ptr<Speech> speech) {
    mWaiting.add(std::move(speech));
}

std::optional<SpeechRequest> SpeechQueue::next(Clock::time_point now) {
    const std::shared_ptr<Speech> speech = now < mClosed ? nullptr : choose();
    if (speech == nullptr) {
        return probe(now);
    }
    if (mInFlight.empty()) {
        mUnanswered = 0;
    }
    mLast = now;
    return cut(speech);
}

std::shared_ptr<Speech> SpeechQueue::choose() const {
    std::shared_ptr<Speech> speech = mPartlySent != nullptr ? mPartlySent : nextTurn();
    if (speech == nullptr || mInFlight.empty()) {
        return speech;
    }
    const std::size_t left = speech->text.size() - speech->sent.bytes;
    const std::size_t bytes = speech->isMarkedUp() ? left : std::min(left, kPieceBytes);
    return mInFlight.size() < kMaxPieces && mBytes + bytes <= kMaxBytes ? speech : nullptr;
}

std::shared_ptr<Speech> SpeechQueue::nextTurn() const {
    const std::shared_ptr<Speech> other = mWaiting.firstOfAnother(mTurn.get());
    if (mInFlight.empty()) {
        return other != nullptr ? other : mWaiting.firstOf(mTurn.get());
    }
    return other != nullptr || isBusyWithPieces() ? nullptr : mWaiting.firstOf(mTurn.get());
}

/// Pieces may have to be recalled, which would recall what follows them too.
bool SpeechQueue::isBusyWithPieces() const {
    return std::any_of(mInFlight.begin(), mInFlight.end(), [](const InFlight& sent) {
        return sent.speech != nullptr && sent.speech->isCut && sent.speech->open > 1;
    });
}

SpeechRequest SpeechQueue::cut(const std::shared_ptr<Speech>& speech) {
    const std::string_view rest = std::string_view(speech->text).substr(speech->sent.bytes);
    const std::size_t bytes = speech->isMarkedUp() ? rest.size() : nextPiece(rest);
    SpeechRequest request;
    request.number = newNumber();
    request.speech = speech;
    request.begin = speech->sent;
    request.bytes = bytes;
    mInFlight.push_back({request.number, speech, request.begin, request.begin, bytes});
    mBytes += bytes;
    speech->sent.bytes += bytes;
    speech->sent.characters += countCharacters(rest.substr(0, bytes));
    speech->isCut = speech->isCut || !speech->isWhole();
    ++speech->open;
    if (mPartlySent == nullptr) {
        mWaiting.takeFirst(speech);
        mTurn = speech->client;
    }
    mPartlySent = speech->isWhole() ? nullptr : speech;
    mProbeDelay = kQuiet;
    return request;
}

std::uint32_t SpeechQueue::newNumber() {
    mNumber = mNumber % 0x7FFFFFFF + 1;
    return mNumber;
}

void SpeechQueue::refuse(const SpeechRequest& request, Status status) {
    remove(request.number);
    refuse(request.speech, status);
}

void SpeechQueue::refuse(const std::shared_ptr<Speech>& speech, Status status) {
    end(speech, {Kind::Refused, status, speech->heard});
}

void SpeechQueue::onEvent(std::uint32_t event, std::uint32_t number, std::uint32_t third,
                          Clock::time_point now) {
    mLast = now;
    mUnanswered = 0;
    mHasAnswered = false;
    InFlight* const sent = find(number);
    if (sent == nullptr) {
        return;
    }
    if (event != TTS::EVENT_STOPPED && !sent->hasStarted) {
        onStarted(number, now);
    }
    if (event == TTS::EVENT_WORD || event == TTS::EVENT_MARK) {
        // A probe, whose turn has been told, is not there any more.
        if (InFlight* const piece = find(number)) {
            onPlace(*piece, event == TTS::EVENT_WORD ? Event::Kind::Word : Event::Kind::Mark, third,
                    now);
        }
    } else if (event == TTS::EVENT_FINISHED) {
        onFinished(number);
    } else if (event == TTS::EVENT_STOPPED) {
        onStopped(number, static_cast<Status>(static_cast<std::int32_t>(third)), now);
    }
}

void SpeechQueue::onStarted(std::uint32_t number, Clock::time_point now) {
    passed(number);
    mProbeDelay = kQuiet;
    InFlight& sent = *find(number);
    sent.hasStarted = true;
    sent.started = now;
    if (sent.isProbe) {
        remove(number);
    } else if (sent.speech != nullptr && !sent.speech->wasTold) {
        sent.speech->wasTold = true;
        Event event;
        event.kind = Event::Kind::Started;
        event.utterance = Utterance(sent.speech->state);
        mTell(*sent.speech->client, std::move(event));
    }
}

void SpeechQueue::onPlace(InFlight& sent, Event::Kind kind, std::uint32_t third,
                          Clock::time_point now) {
    if (sent.speech == nullptr) {
        return;
    }
    Speech& speech = *sent.speech;
    if (speech.isStopped) {
        flushAgain(sent, now);
    }
    speech.heard = true;
    Event event;
    event.kind = kind;
    event.utterance = Utterance(speech.state);
    if (kind == Event::Kind::Word) {
        const std::string_view known =
            std::string_view(speech.text).substr(0, sent.begin.bytes + sent.bytes);
        const std::size_t place = sent.begin.characters + third;
        if (place < sent.cursor.characters) {
            sent.cursor = sent.begin;  // a word may come once more, or earlier
        }
        sent.cursor = advance(known, sent.cursor, place - sent.cursor.characters);
        speech.state->moveTo(sent.cursor);
    } else {
        event.value = third;
    }
    event.position = sent.cursor;
    mTell(*speech.client, std::move(event));
}

void SpeechQueue::onFinished(std::uint32_t number) {
    InFlight* const sent = find(number);
    if (sent == nullptr) {
        return;
    }
    const std::shared_ptr<Speech> speech = sent->speech;
    remove(number);
    if (speech == nullptr) {
        return;
    }
    speech->heard = true;
    if (speech->open == 0 && speech->isWhole()) {
        const bool isAll = speech->sent.bytes == speech->text.size();
        end(speech, isAll ? Outcome(Kind::Finished, Status::Ok, true)
                          : Outcome(Kind::Stopped, Status::Ok, true, speech->stopper));
    }
}

void SpeechQueue::onStopped(std::uint32_t number, Status status, Clock::time_point now) {
    const InFlight sent = *find(number);
    remove(number);
    if (sent.speech == nullptr) {
        return;
    }
    Speech& speech = *sent.speech;
    speech.heard = speech.heard || (sent.hasStarted && now - sent.started > kInaudible);
    if (status == Status::Shutdown) {
        mClosed = now + kEnding;
        lose(sent.speech, status);
    } else if (status == Status::Ok) {
        end(sent.speech, {Kind::Stopped, status, speech.heard, speech.stopper});
    } else if (!speech.wasTold) {
        end(sent.speech, {Kind::Refused, status, speech.heard});
    } else {
        end(sent.speech,
            {status == Status::Disabled ? Kind::Stopped : Kind::Lost, status, speech.heard});
    }
}

/// Nothing that was sent of it matters any more, nor is more of it sent.
void SpeechQueue::detach(const std::shared_ptr<Speech>& speech) {
    for (InFlight& sent : mInFlight) {
        if (sent.speech == speech) {
            sent.speech = nullptr;
            mOwesFlush = true;
        }
    }
    if (mPartlySent == speech) {
        mPartlySent = nullptr;
    }
}

void SpeechQueue::end(const std::shared_ptr<Speech>& speech, const Outcome& outcome) {
    detach(speech);
    endSpeech(*speech, outcome, mTell);
}

bool SpeechQueue::isWaiting(const Mailbox& client) const {
    return (mPartlySent != nullptr && mPartlySent->client.get() == &client) || mWaiting.has(client);
}

bool SpeechQueue::isOpen(const Mailbox& client) const {
    return isWaiting(client) ||
           std::any_of(mInFlight.begin(), mInFlight.end(), [&client](const InFlight& sent) {
               return sent.speech != nullptr && sent.speech->client.get() == &client;
           });
}

bool SpeechQueue::isWanted(const Mailbox& client) const {
    return isWaiting(client) ||
           std::any_of(mInFlight.begin(), mInFlight.end(), [&client](const InFlight& sent) {
               return sent.speech != nullptr && sent.speech->client.get() == &client &&
                      !sent.speech->isStopped;
           });
}

SpeechQueue::InFlight* SpeechQueue::find(std::uint32_t number) {
    const auto found =
        std::find_if(mInFlight.begin(), mInFlight.end(),
                     [number](const InFlight& sent) { return sent.number == number; });
    return found == mInFlight.end() ? nullptr : &*found;
}

void SpeechQueue::remove(std::uint32_t number) {
    const auto found =
        std::find_if(mInFlight.begin(), mInFlight.end(),
                     [number](const InFlight& sent) { return sent.number == number; });
    if (found == mInFlight.end()) {
        return;
    }
    mBytes -= found->bytes;
    if (found->speech != nullptr) {
        --found->speech->open;
    }
    mInFlight.erase(found);
}

}  // namespace voxtrel
