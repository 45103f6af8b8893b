// SPDX-License-Identifier: Apache-2.0
// What the queue does where somebody wants silence, or a client ends.
#include "voxtrel/session/SpeechQueue.h"

#include <algorithm>

namespace voxtrel {

using Kind = Outcome::Kind;

/// Unless that would drop what was said since.
void SpeechQueue::flushAgain(InFlight& sent, Clock::time_point now) {
    if (sent.goesOn == Clock::time_point()) {
        sent.goesOn = now;
    }
    const bool isLate = now - sent.goesOn > kToDrop;
    if (isLate && std::none_of(mInFlight.begin(), mInFlight.end(), [](const InFlight& each) {
            return each.speech != nullptr && !each.speech->isStopped;
        })) {
        mOwesFlush = true;
        sent.goesOn = now;
    }
}

DroppedSpeech SpeechQueue::stop(const Mailbox& client) {
    for (InFlight& sent : mInFlight) {
        if (sent.speech != nullptr && sent.speech->client.get() == &client) {
            sent.speech->stopper = Outcome::Stopper::ThisClient;
            sent.speech->isStopped = true;
            mOwesFlush = true;
        }
    }
    if (mPartlySent != nullptr && mPartlySent->client.get() == &client) {
        const std::shared_ptr<Speech> begun = std::move(mPartlySent);
        mPartlySent = nullptr;
        if (begun->open == 0) {
            end(begun, {Kind::Stopped, Status::Ok, begun->heard, Outcome::Stopper::ThisClient});
        }
    }
    return {mWaiting.takeAllOf(client), Kind::Stopped, Status::Ok, &client};
}

void SpeechQueue::attributeStop(const Mailbox& by) {
    for (InFlight& sent : mInFlight) {
        if (sent.speech != nullptr) {
            sent.speech->stopper = sent.speech->client.get() == &by ? Outcome::Stopper::ThisClient
                                                                    : Outcome::Stopper::ThisProcess;
            sent.isSilenced = true;
        }
    }
}

void SpeechQueue::revokeStop() {
    for (InFlight& sent : mInFlight) {
        sent.isSilenced = false;
        if (sent.speech != nullptr && !sent.speech->isStopped) {
            sent.speech->stopper = Outcome::Stopper::Somebody;
        }
    }
}

DroppedSpeech SpeechQueue::dropWaiting(const Mailbox& by) {
    const std::shared_ptr<Speech> begun = mPartlySent;
    if (begun != nullptr && begun->open == 0) {
        const bool isOwn = begun->client.get() == &by;
        end(begun, {Kind::Stopped, Status::Ok, begun->heard,
                    isOwn ? Outcome::Stopper::ThisClient : Outcome::Stopper::ThisProcess});
    }
    return {mWaiting.takeAll(), Kind::Stopped, Status::Ok, &by};
}

DroppedSpeech SpeechQueue::close(const Mailbox& client) {
    const bool owed = mOwesFlush;
    const auto closeOwn = [&](const std::shared_ptr<Speech>& place) {
        // The place is emptied meanwhile.
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
        const std::shared_ptr<Speech> speech = place;
        if (speech != nullptr && speech->client.get() == &client) {
            end(speech, {Kind::Lost, Status::Closed, speech->heard});
        }
    };
    for (const InFlight& sent : mInFlight) {
        closeOwn(sent.speech);
    }
    closeOwn(mPartlySent);
    mOwesFlush = owed;  // what the service has is spoken
    if (mInFlight.empty()) {
        mTurn.reset();
    }
    return {mWaiting.takeAllOf(client), Kind::Lost, Status::Closed};
}

bool SpeechQueue::isSilencedSounding() const {
    return std::any_of(mInFlight.begin(), mInFlight.end(),
                       [](const InFlight& sent) { return sent.isSilenced && sent.hasStarted; });
}

bool SpeechQueue::takeFlush() {
    const bool owed = mOwesFlush;
    mOwesFlush = false;
    return owed;
}

}  // namespace voxtrel
