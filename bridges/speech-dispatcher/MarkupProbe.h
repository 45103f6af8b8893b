// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_MARKUPPROBE_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_MARKUPPROBE_H

#include "bridges/speech-dispatcher/Service.h"

namespace sd_voxtrel {

enum class MarkupPolicy { Auto, Always, Never };

/// Finds out whether the service understands marked-up text: says, unheard, a text that is nothing
/// but a mark. A service that tells the mark does; one that does not would read the tags out.
class MarkupProbe {
public:
    MarkupProbe(Service& service, MarkupPolicy policy) : mService(service), mPolicy(policy) {
        forget();
    }

    /// What was found out does not hold for another service.
    void forget();

    /// Does nothing if it is known, or asked already.
    void ask();

    bool isUnderway() const { return mNumber != 0; }

    /// True if it understands; false also while that is not known.
    bool isUnderstood() const { return mAnswer == Answer::Yes; }
    bool isKnown() const { return mAnswer != Answer::None; }

    /// @return true if the event is about what was asked here.
    bool take(const ServiceEvent& event);

private:
    enum class Answer { None, Yes, No };

    Service& mService;
    const MarkupPolicy mPolicy;
    Answer mAnswer = Answer::None;
    unsigned long mNumber = 0;  ///< of the utterance that asks; 0: none
};

}  // namespace sd_voxtrel

#endif
