// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/Utterance.h"

#include "voxtrel/Deadline.h"
#include "voxtrel/session/UtteranceState.h"

namespace voxtrel {

std::uint64_t Utterance::number() const noexcept {
    return mState == nullptr ? 0 : mState->number();
}

Outcome Utterance::outcome() const noexcept {
    return mState == nullptr ? Outcome() : mState->outcome();
}

Outcome Utterance::wait(std::chrono::milliseconds timeout) const {
    return mState == nullptr ? Outcome() : mState->waitUntil(deadlineAfter(timeout));
}

Outcome Utterance::wait() const {
    return mState == nullptr ? Outcome() : mState->wait();
}

Position Utterance::position() const noexcept {
    return mState == nullptr ? Position() : mState->position();
}

}  // namespace voxtrel
