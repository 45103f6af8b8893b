// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENTSTATE_H
#define VOXTREL_CLIENTSTATE_H

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "voxtrel/session/Session.h"

namespace voxtrel {

/// What a client and the locks it gave share.
class ClientState {
public:
    struct Times {
        std::chrono::milliseconds deadline;
        std::chrono::milliseconds linger;
    };

    ClientState(const Times& chosen, bool isPolled)
        : times(chosen), mailbox(std::make_shared<Mailbox>(isPolled)) {}

    std::chrono::steady_clock::time_point deadline(
        std::optional<std::chrono::milliseconds> asked) const;
    std::shared_ptr<Speech> newSpeech();

    /// Ends the client; waits for what it says no longer than until `atMost`.
    void end(std::chrono::steady_clock::time_point atMost);

    const Times times;
    const std::shared_ptr<Mailbox> mailbox;
    std::shared_ptr<Session> session;  ///< set before any other thread has this, and never again

    std::mutex mutex;  ///< of what follows
    SpeechOptions defaults;
    std::uint64_t said = 0;
};

}  // namespace voxtrel

#endif
