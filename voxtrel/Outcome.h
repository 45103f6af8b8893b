// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_OUTCOME_H
#define VOXTREL_OUTCOME_H

#include <cstddef>

#include "voxtrel/Status.h"

namespace voxtrel {

/// A place in the text that was given to `say`.
struct Position {
    std::size_t bytes = 0;
    std::size_t characters = 0;  ///< code points
};

/// What became of an utterance. A plain value. Called on: any one thread.
class Outcome {
public:
    enum class Kind {
        Pending,   ///< it waits, or is being spoken
        Finished,  ///< spoken to its end
        Stopped,   ///< somebody wanted silence
        Refused,   ///< nothing of it is spoken; `status` says why
        /// The service died or was ended, never got it, or refused the rest of it after it had
        /// begun; `status` says which.
        Lost,
    };

    /// Who stopped it, as far as it is known.
    enum class Stopper {
        Nobody,
        ThisClient,   ///< `Client::stop` or `stopEverybody` of the client that said it
        ThisProcess,  ///< `stopEverybody` of another client of this process
        Somebody,     ///< another process
    };

    Outcome() = default;
    Outcome(Kind kind, Status status, bool heard, Stopper stopper = Stopper::Nobody) noexcept
        : mKind(kind), mStatus(status), mStopper(stopper), mHeard(heard) {}

    /// True for Finished alone.
    explicit operator bool() const noexcept { return mKind == Kind::Finished; }

    Kind kind() const noexcept { return mKind; }
    bool isPending() const noexcept { return mKind == Kind::Pending; }
    Status status() const noexcept { return mStatus; }
    Stopper stopper() const noexcept { return mStopper; }

    /// A part of it has been heard; of a finished one, all of it.
    bool wasHeard() const noexcept { return mHeard; }

    /// One line of English, with what to do; static, never null.
    const char* message() const noexcept;

private:
    Kind mKind = Kind::Pending;
    Status mStatus = Status::Ok;
    Stopper mStopper = Stopper::Nobody;
    bool mHeard = false;
};

}  // namespace voxtrel

#endif
