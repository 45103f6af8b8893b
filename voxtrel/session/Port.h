// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_PORT_H
#define VOXTREL_SESSION_PORT_H

#include <functional>
#include <string>

#include "ipc/ITextToSpeechFestival.h"
#include "voxtrel/Diagnosis.h"

namespace voxtrel {

/// What a session needs of whatever lies between it and the service, beyond calling it. The runtime
/// is one; a test has another.
class Port {
public:
    virtual ~Port() = default;

    /// What `find` found, or why nothing.
    struct Found {
        android::sp<TTS::ITextToSpeechFestival> service = nullptr;
        Reach reach = Reach::Connected;  ///< where it ended, when there is no service
        Peer peer = {};                  ///< of the service
    };

    /// Looks for the service once. May take as long as the runtime does: without end.
    /// @param died is called on any thread, once, when the service dies.
    virtual Found find(std::function<void()> died) = 0;

    /// What the system tells of the way to the service manager, asking nobody: reach `NoManager`,
    /// `ManagerNotPermitted`, or `Connected` for one that may be there. Never waits. Called on: any
    /// thread.
    virtual Diagnosis look() const { return {Reach::Connected}; }
};

}  // namespace voxtrel

#endif
