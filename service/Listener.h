// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_LISTENER_H
#define VOXTREL_SERVICE_LISTENER_H

#include <cstdint>

#include "vocabulary/Events.h"

namespace voxtreld {

/// Where the speech thread reports what became of a client's utterances.
class Listener {
public:
    virtual ~Listener() = default;

    /// Must not block: it is called between two pieces of sound.
    /// Called on: the speech thread, binder threads.
    virtual void tell(uint32_t pid, TTS::Event event, uint32_t second, uint32_t third) = 0;
};

}  // namespace voxtreld

#endif
