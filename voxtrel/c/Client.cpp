// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"

using namespace voxtrel::c;
using voxtrel::HandlerThread;
using voxtrel::LockState;
using voxtrel::Milliseconds;

static_assert(static_cast<int>(HandlerThread::OfTheLibrary) == VX_THREAD_OF_LIBRARY);
static_assert(static_cast<int>(HandlerThread::OfTheApplication) == VX_THREAD_OF_APPLICATION);
static_assert(static_cast<int>(LockState::Free) == VX_LOCK_FREE);
static_assert(static_cast<int>(LockState::HeldByThisProcess) == VX_LOCK_HELD_BY_THIS_PROCESS);
static_assert(static_cast<int>(LockState::HeldByAnother) == VX_LOCK_HELD_BY_ANOTHER);
static_assert(static_cast<int>(LockState::Unknown) == VX_LOCK_UNKNOWN);

namespace {

vx_status setTime(vx_client_options* options, Milliseconds voxtrel::ClientOptions::*time,
                  int milliseconds) {
    if (!areGiven(options)) {
        return VX_BAD_PARAMETER;
    }
    if (milliseconds < 0) {
        return badParameter("a time is negative");
    }
    options->*time = Milliseconds(milliseconds);
    return VX_OK;
}

}  // namespace

vx_status vx_client_options_new(vx_client_options** options) {
    return create(options);
}

vx_status vx_client_options_free(vx_client_options* options) {
    return destroy(options);
}

vx_status vx_client_options_set_deadline(vx_client_options* options, int milliseconds) {
    return setTime(options, &voxtrel::ClientOptions::deadline, milliseconds);
}

vx_status vx_client_options_set_linger(vx_client_options* options, int milliseconds) {
    return setTime(options, &voxtrel::ClientOptions::linger, milliseconds);
}

vx_status vx_client_options_set_handler_thread(vx_client_options* options, int thread) {
    if (!areGiven(options)) {
        return VX_BAD_PARAMETER;
    }
    if (thread != VX_THREAD_OF_LIBRARY && thread != VX_THREAD_OF_APPLICATION) {
        return badParameter("there is no such handler thread");
    }
    options->handlerThread = static_cast<HandlerThread>(thread);
    return VX_OK;
}

vx_status vx_client_options_trust_user(vx_client_options* options, unsigned int user) {
    if (!areGiven(options)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        if (!options->trustedUsers) {
            options->trustedUsers.emplace();
        }
        options->trustedUsers->push_back(user);
        return VX_OK;
    });
}

vx_status vx_client_new(const char* name, const vx_client_options* options, vx_client** client) {
    if (!areGiven(client)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        voxtrel::ClientOptions chosen;
        if (options != nullptr) {
            chosen = *options;
        }
        const bool isPolled = chosen.handlerThread == HandlerThread::OfTheApplication;
        auto made = std::unique_ptr<vx_client>(
            new vx_client{voxtrel::Client(name ? name : "", chosen), isPolled});
        if (isPolled) {
            listen(*made, nullptr, nullptr);
        }
        *client = made.release();
        return VX_OK;
    });
}

vx_status vx_client_free(vx_client* client) {
    return destroy(client);
}

vx_status vx_is_connected(vx_client* client, int* connected) {
    if (!areGiven(client, connected)) {
        return VX_BAD_PARAMETER;
    }
    *connected = client->client.isConnected() ? 1 : 0;
    return VX_OK;
}

vx_status vx_wait_until_connected(vx_client* client, int deadline_ms) {
    Deadline deadline;
    if (!areGiven(client) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.waitUntilConnected(deadline)); });
}

vx_status vx_check_events(vx_client* client, int deadline_ms) {
    Deadline deadline;
    if (!areGiven(client) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.checkEvents(deadline)); });
}

vx_status vx_set_defaults(vx_client* client, const vx_options* options) {
    if (!areGiven(client, options)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        client->client.setDefaults(*options);
        return VX_OK;
    });
}

vx_status vx_get_defaults(vx_client* client, vx_options** options) {
    if (!areGiven(client, options)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return create(options, client->client.defaults()); });
}

vx_status vx_take_lock(vx_client* client, int deadline_ms, vx_lock** lock) {
    Deadline deadline;
    if (!areGiven(client, lock) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        return finish(client->client.lock(deadline),
                      [lock](voxtrel::Lock&& taken) { *lock = new vx_lock{std::move(taken)}; });
    });
}

vx_status vx_lock_is_held(const vx_lock* lock, int* held) {
    if (!areGiven(lock, held)) {
        return VX_BAD_PARAMETER;
    }
    *held = lock->lock.isHeld() ? 1 : 0;
    return VX_OK;
}

vx_status vx_lock_free(vx_lock* lock) {
    return destroy(lock);
}

vx_status vx_lock_state(vx_client* client, int deadline_ms, int* state) {
    Deadline deadline;
    if (!areGiven(client, state) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        return finish(client->client.lockState(deadline),
                      [state](LockState found) { *state = static_cast<int>(found); });
    });
}

vx_status vx_break_lock(vx_client* client, int deadline_ms, unsigned int* process) {
    Deadline deadline;
    if (!areGiven(client) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        return finish(client->client.breakLock(deadline), [process](std::uint32_t holder) {
            if (process != nullptr) {
                *process = holder;
            }
        });
    });
}
