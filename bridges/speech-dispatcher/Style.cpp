// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Service.h"

namespace sd_voxtrel {

bool Style::relax() {
    if (voice) {
        voice.reset();
        return true;
    }
    if (language) {
        language.reset();
        return true;
    }
    const bool hasNumbers = rate != 0 || pitch != 0 || volume != 0;
    rate = pitch = volume = 0;
    return hasNumbers;
}

}  // namespace sd_voxtrel
