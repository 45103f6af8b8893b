// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_DROPPEDSPEECH_H
#define VOXTREL_SESSION_DROPPEDSPEECH_H

#include <functional>

#include "voxtrel/Event.h"
#include "voxtrel/session/WaitingLines.h"

namespace voxtrel {

/// Utterances that waited and are dropped. There may be very many, so that whoever drops them lets
/// go of the session's lock before it gives them their outcomes. Called on: any one thread.
class [[nodiscard]] DroppedSpeech {
public:
    DroppedSpeech(WaitingLines::Places places, Outcome::Kind kind, Status status,
                  const Mailbox* stopper = nullptr)
        : mPlaces(std::move(places)), mKind(kind), mStatus(status), mStopper(stopper) {}

    bool isEmpty() const { return mPlaces.empty(); }

    /// Gives each its outcome and tells it. Locks: those of utterances, in turn.
    void end(const std::function<void(Mailbox&, Event&&)>& tell);

private:
    Outcome outcomeOf(const Speech& speech) const;

    WaitingLines::Places mPlaces;
    Outcome::Kind mKind;
    Status mStatus;
    const Mailbox* mStopper;
};

/// Ends an utterance that is in no queue any more.
void endSpeech(const Speech& speech, const Outcome& outcome,
               const std::function<void(Mailbox&, Event&&)>& tell);

}  // namespace voxtrel

#endif
