// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/DroppedSpeech.h"

namespace voxtrel {

void DroppedSpeech::end(const std::function<void(Mailbox&, Event&&)>& tell) {
    for (; !mPlaces.empty(); mPlaces.pop_front()) {
        const Speech& speech = *mPlaces.front().speech;
        endSpeech(speech, outcomeOf(speech), tell);
    }
}

Outcome DroppedSpeech::outcomeOf(const Speech& speech) const {
    const Outcome::Stopper stopper = mStopper == nullptr ? Outcome::Stopper::Nobody
                                     : mStopper == speech.client.get()
                                         ? Outcome::Stopper::ThisClient
                                         : Outcome::Stopper::ThisProcess;
    return {mKind, mStatus, speech.heard, stopper};
}

void endSpeech(const Speech& speech, const Outcome& outcome,
               const std::function<void(Mailbox&, Event&&)>& tell) {
    speech.state->end(outcome);
    Event event;
    event.kind = Event::Kind::Ended;
    event.utterance = Utterance(speech.state);
    event.outcome = outcome;
    tell(*speech.client, std::move(event));
}

}  // namespace voxtrel
