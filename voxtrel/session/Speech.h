// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_SPEECH_H
#define VOXTREL_SESSION_SPEECH_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "voxtrel/Speech.h"
#include "voxtrel/session/TextCutter.h"
#include "voxtrel/session/UtteranceState.h"

namespace voxtrel {

class Mailbox;

/// One utterance of an application, from `say` until its outcome.
struct Speech {
    std::shared_ptr<Mailbox> client;  ///< whose it is, and who is told
    std::shared_ptr<UtteranceState> state;
    std::string text;
    std::optional<std::uint32_t> pauseMs;  ///< silence in place of the text
    SpeechOptions options;

    // Below: the queue's.
    Position sent = {};      ///< what lies before has been handed to the sender
    unsigned open = 0;       ///< pieces sent of which the end has not been told
    bool isCut = false;      ///< it goes in more than one piece
    bool isStopped = false;  ///< nothing more of it is to be sent
    bool heard = false;      ///< a part of it has sounded
    bool wasTold = false;    ///< that it has started
    bool wasRepeated = false;
    Outcome::Stopper stopper = Outcome::Stopper::Somebody;  ///< who a flush is put down to

    bool isWhole() const { return isStopped || sent.bytes == text.size(); }
    bool isMarkedUp() const { return voxtrel::isMarkedUp(text); }
    OnLoss onLoss() const { return options.onLoss.value_or(OnLoss::Report); }
};

/// One request to speak, as the sender hands it to the service.
struct SpeechRequest {
    enum class Kind {
        Piece,  ///< of `speech`
        Probe,  ///< a pause of no length: its turn proves what came before it
        Fence,  ///< a pause that is too long: refused at once by a service that tells of refusals
    };

    Kind kind = Kind::Piece;
    std::uint32_t number = 0;
    std::shared_ptr<Speech> speech;
    Position begin = {};
    std::size_t bytes = 0;
};

}  // namespace voxtrel

#endif
