// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_PROSODY_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_PROSODY_H

#include <optional>

namespace sd_voxtrel {

/// What a service can do of speed, pitch or volume, and what it does unasked.
struct Scale {
    double least = 0;
    double most = 0;
    std::optional<double> own;  ///< not known: the middle

    /// The desktop's value on this scale: -100 is the least, 0 its own, 100 the most, and what lies
    /// between is even on both sides.
    double at(int value) const;
};

}  // namespace sd_voxtrel

#endif
