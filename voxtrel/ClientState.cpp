// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/ClientState.h"

#include <unistd.h>

#include <algorithm>

#include "voxtrel/Deadline.h"

namespace voxtrel {

std::chrono::steady_clock::time_point ClientState::deadline(
    std::optional<std::chrono::milliseconds> asked) const {
    return deadlineAfter(asked.value_or(times.deadline));
}

void ClientState::end(std::chrono::steady_clock::time_point atMost) {
    // A forked child lets its parent's be.
    if (session->pid() != static_cast<unsigned>(getpid())) {
        return;
    }
    session->waitUntilSent(*mailbox, std::min(deadlineAfter(times.linger), atMost));
    session->unlock(*mailbox);
    session->leave(mailbox, std::min(deadlineAfter(times.deadline), atMost));
}

std::shared_ptr<Speech> ClientState::newSpeech() {
    const std::lock_guard<std::mutex> lock(mutex);
    auto speech = std::make_shared<Speech>();
    speech->client = mailbox;
    speech->state = std::make_shared<UtteranceState>(++said);
    speech->options = defaults;
    return speech;
}

}  // namespace voxtrel
