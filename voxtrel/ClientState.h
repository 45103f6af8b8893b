// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENTSTATE_H
#define VOXTREL_CLIENTSTATE_H

#include <memory>
#include <mutex>
#include <optional>

#include "voxtrel/Client.h"
#include "voxtrel/session/Session.h"

namespace voxtrel {

/// What a client and the locks it gave share.
class ClientState {
public:
    explicit ClientState(const ClientOptions& options);

    std::chrono::steady_clock::time_point deadline(std::optional<Milliseconds> asked) const;
    std::shared_ptr<Speech> newSpeech();

    /// Ends the client; waits for what it says no longer than until `atMost`.
    void end(std::chrono::steady_clock::time_point atMost);

    const ClientOptions options;
    const std::shared_ptr<Mailbox> mailbox;
    const std::shared_ptr<Session> session;

    std::mutex mutex;  ///< of what follows
    SpeechOptions defaults;
    std::uint64_t said = 0;
};

}  // namespace voxtrel

#endif
