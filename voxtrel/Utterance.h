// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_UTTERANCE_H
#define VOXTREL_UTTERANCE_H

#include <chrono>
#include <cstdint>
#include <memory>

#include "voxtrel/Outcome.h"

namespace voxtrel {

class UtteranceState;

/// A handle on what a client said; copies stand for the same utterance. It may outlive the client,
/// which decides its outcome when it ends.
///
/// Called on: any thread, event handlers included. Waiting for an outcome inside a handler holds up
/// the handlers that would run on the same thread, not the outcome.
class Utterance {
public:
    /// Of nothing: number 0, and pending for ever.
    Utterance() = default;
    explicit Utterance(std::shared_ptr<UtteranceState> state) noexcept : mState(std::move(state)) {}

    /// Counted from 1 in its client.
    std::uint64_t number() const noexcept;

    /// The outcome, `Pending` while there is none.
    Outcome outcome() const noexcept;

    /// Waits for the outcome.
    /// @return `Pending` when there is none in time.
    Outcome wait(std::chrono::milliseconds timeout) const;

    /// Waits until there is an outcome, which may take as long as others speak. At once for a
    /// handle on nothing.
    Outcome wait() const;

    /// Where the word begins that is being spoken; 0 before the first.
    Position position() const noexcept;

    friend bool operator==(const Utterance& a, const Utterance& b) noexcept {
        return a.mState == b.mState;
    }
    friend bool operator!=(const Utterance& a, const Utterance& b) noexcept { return !(a == b); }

private:
    friend class Client;
    std::shared_ptr<UtteranceState> mState;
};

}  // namespace voxtrel

#endif
