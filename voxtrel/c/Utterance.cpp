// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"

using namespace voxtrel::c;
using voxtrel::Outcome;

static_assert(static_cast<int>(Outcome::Kind::Pending) == VX_OUTCOME_PENDING);
static_assert(static_cast<int>(Outcome::Kind::Finished) == VX_OUTCOME_FINISHED);
static_assert(static_cast<int>(Outcome::Kind::Stopped) == VX_OUTCOME_STOPPED);
static_assert(static_cast<int>(Outcome::Kind::Refused) == VX_OUTCOME_REFUSED);
static_assert(static_cast<int>(Outcome::Kind::Lost) == VX_OUTCOME_LOST);
static_assert(static_cast<int>(Outcome::Stopper::Nobody) == VX_BY_NOBODY);
static_assert(static_cast<int>(Outcome::Stopper::ThisClient) == VX_BY_THIS_CLIENT);
static_assert(static_cast<int>(Outcome::Stopper::ThisProcess) == VX_BY_THIS_PROCESS);
static_assert(static_cast<int>(Outcome::Stopper::Somebody) == VX_BY_SOMEBODY);

namespace {

/// Calls `say`, and makes a handle of its utterance where one is wanted.
template <typename Say>
vx_status speak(vx_utterance** utterance, Say say) noexcept {
    return guarded([&] {
        // First: what has been said cannot be taken back.
        auto handle = utterance ? std::make_unique<vx_utterance>() : nullptr;
        const voxtrel::Utterance said = say();
        if (handle != nullptr) {
            handle->utterance = said;
            *utterance = handle.release();
        }
        return VX_OK;
    });
}

}  // namespace

namespace voxtrel::c {

vx_outcome toC(const Outcome& outcome) noexcept {
    vx_outcome out = {};
    out.kind = static_cast<int>(outcome.kind());
    out.status = static_cast<vx_status>(outcome.status());
    out.stopper = static_cast<int>(outcome.stopper());
    out.heard = outcome.wasHeard() ? 1 : 0;
    out.message = outcome.message();
    return out;
}

}  // namespace voxtrel::c

vx_status vx_say(vx_client* client, const char* text, const vx_options* options,
                 vx_utterance** utterance) {
    if (!areGiven(client, text)) {
        return VX_BAD_PARAMETER;
    }
    return speak(utterance, [&] {
        return options != nullptr ? client->client.say(text, *options) : client->client.say(text);
    });
}

vx_status vx_pause(vx_client* client, int milliseconds, vx_utterance** utterance) {
    if (!areGiven(client)) {
        return VX_BAD_PARAMETER;
    }
    return speak(utterance,
                 [&] { return client->client.pause(voxtrel::Milliseconds(milliseconds)); });
}

vx_status vx_stop(vx_client* client) {
    if (!areGiven(client)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        client->client.stop();
        return VX_OK;
    });
}

vx_status vx_stop_everybody(vx_client* client, int deadline_ms) {
    Deadline deadline;
    if (!areGiven(client) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.stopEverybody(deadline)); });
}

vx_status vx_stop_process(vx_client* client, unsigned int process, int deadline_ms) {
    Deadline deadline;
    if (!areGiven(client) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.stopProcess(process, deadline)); });
}

vx_status vx_wait_until_taken(vx_client* client, int deadline_ms) {
    Deadline deadline;
    if (!areGiven(client) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.waitUntilTaken(deadline)); });
}

vx_status vx_wait_for_all(vx_client* client, int timeout_ms) {
    Deadline timeout;
    if (!areGiven(client) || !readTimeout(timeout_ms, timeout)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        const auto limit = timeout.value_or(voxtrel::Milliseconds::max());
        return finish(client->client.waitForAll(limit));
    });
}

vx_status vx_utterance_number(const vx_utterance* utterance, unsigned long* number) {
    if (!areGiven(utterance, number)) {
        return VX_BAD_PARAMETER;
    }
    *number = static_cast<unsigned long>(utterance->utterance.number());
    return VX_OK;
}

vx_status vx_utterance_outcome(const vx_utterance* utterance, vx_outcome* outcome) {
    if (!areGiven(utterance, outcome)) {
        return VX_BAD_PARAMETER;
    }
    *outcome = toC(utterance->utterance.outcome());
    return VX_OK;
}

vx_status vx_utterance_wait(const vx_utterance* utterance, int timeout_ms, vx_outcome* outcome) {
    Deadline timeout;
    if (!areGiven(utterance) || !readTimeout(timeout_ms, timeout)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        const Outcome found =
            timeout ? utterance->utterance.wait(*timeout) : utterance->utterance.wait();
        if (found.isPending()) {
            return fail(VX_TIMED_OUT, "it is still being spoken, or waits for its turn");
        }
        if (outcome != nullptr) {
            *outcome = toC(found);
        }
        return static_cast<vx_status>(VX_OK);
    });
}

vx_status vx_utterance_position(const vx_utterance* utterance, vx_position* position) {
    if (!areGiven(utterance, position)) {
        return VX_BAD_PARAMETER;
    }
    const voxtrel::Position found = utterance->utterance.position();
    *position = {found.bytes, found.characters};
    return VX_OK;
}

vx_status vx_utterance_free(vx_utterance* utterance) {
    return destroy(utterance);
}
