// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_PORT_H
#define VOXTREL_SESSION_PORT_H

#include <functional>
#include <string>

#include "ipc/ITextToSpeechFestival.h"
#include "voxtrel/Status.h"

namespace voxtrel {

/// What a session needs of whatever lies between it and the service, beyond calling it. The runtime
/// is one; a test has another.
class Port {
public:
    virtual ~Port() = default;

    /// What `find` found, or why nothing.
    struct Found {
        android::sp<TTS::ITextToSpeechFestival> service;
        Status status = Status::Ok;
        std::string why;
    };

    /// Looks for the service once. May take as long as the runtime does: without end.
    /// @param died is called on any thread, once, when the service dies.
    virtual Found find(std::function<void()> died) = 0;
};

}  // namespace voxtrel

#endif
