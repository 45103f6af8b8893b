// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/MarkupProbe.h"

namespace sd_voxtrel {

void MarkupProbe::forget() {
    mNumber = 0;
    mAnswer = mPolicy == MarkupPolicy::Always  ? Answer::Yes
              : mPolicy == MarkupPolicy::Never ? Answer::No
                                               : Answer::None;
}

void MarkupProbe::ask() {
    if (!isKnown() && !isUnderway()) {
        Style mute;
        mute.isMute = true;
        mNumber = mService.say("<speak><mark name=\"a\"/></speak>", mute);
    }
}

bool MarkupProbe::take(const ServiceEvent& event) {
    if (mNumber == 0 || event.utterance != mNumber) {
        return false;
    }
    switch (event.kind) {
        case ServiceEvent::Kind::Started:
            return true;
        case ServiceEvent::Kind::Mark:
            mAnswer = Answer::Yes;
            return true;
        case ServiceEvent::Kind::Word:
            if (!isKnown()) {
                mAnswer = Answer::No;
                mService.stop();
            }
            return true;
        case ServiceEvent::Kind::Finished:
        case ServiceEvent::Kind::Unable:
            mAnswer = isKnown() ? mAnswer : Answer::No;
            break;
        default:
            break;
    }
    mNumber = 0;
    return true;
}

}  // namespace sd_voxtrel
