// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_UTTERANCE_H
#define VOXTREL_SERVICE_UTTERANCE_H

#include <cstdint>
#include <string>

#include "service/Engine.h"

namespace voxtreld {

/// One thing to be heard, with every setting resolved when it was accepted.
struct Utterance {
    uint32_t pid = 0;
    uint32_t user = 0;     ///< whose process that is
    uint32_t id = 0;       ///< the client's own number for it
    std::string text;      ///< valid UTF-8; empty for a pause
    uint32_t pauseMs = 0;  ///< length of a pause, when there is no text
    Prosody prosody;
    float gain = 1.0F;            ///< applied to the speech samples, 0 to 1
    float backgroundGain = 0.0F;  ///< applied to the background sound meanwhile, 0 to 1
};

}  // namespace voxtreld

#endif
