// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"

using namespace voxtrel::c;
using voxtrel::Event;

static_assert(static_cast<int>(Event::Kind::Started) == VX_EVENT_STARTED);
static_assert(static_cast<int>(Event::Kind::Word) == VX_EVENT_WORD);
static_assert(static_cast<int>(Event::Kind::Mark) == VX_EVENT_MARK);
static_assert(static_cast<int>(Event::Kind::Ended) == VX_EVENT_ENDED);
static_assert(static_cast<int>(Event::Kind::Connected) == VX_EVENT_CONNECTED);
static_assert(static_cast<int>(Event::Kind::Disconnected) == VX_EVENT_DISCONNECTED);
static_assert(static_cast<int>(Event::Kind::Changed) == VX_EVENT_CHANGED);
static_assert(static_cast<int>(Event::Setting::Speech) == VX_CHANGED_SPEECH);
static_assert(static_cast<int>(Event::Setting::Reset) == VX_CHANGED_RESET);

namespace {

/// Where this thread, which is in `vx_next_event`, takes an event to; else null.
thread_local vx_event* destination = nullptr;

bool isPolled(const vx_client& client) {
    if (!client.isPolled) {
        badParameter("the client has no VX_THREAD_OF_APPLICATION");
    }
    return client.isPolled;
}

}  // namespace

namespace voxtrel::c {

vx_event toC(const Event& event) noexcept {
    vx_event out = {};
    out.kind = static_cast<int>(event.kind);
    out.utterance = static_cast<unsigned long>(event.utterance.number());
    out.position = {event.position.bytes, event.position.characters};
    out.outcome = toC(event.outcome);
    out.setting = static_cast<unsigned long>(event.setting);
    out.value = event.value;
    return out;
}

void listen(vx_client& client, vx_handler handler, void* user) {
    client.client.onEvent([handler, user](const Event& event) {
        if (destination != nullptr) {
            *destination = toC(event);
        } else if (handler != nullptr) {
            const vx_event told = toC(event);
            handler(&told, user);
        }
    });
}

}  // namespace voxtrel::c

vx_status vx_on_event(vx_client* client, vx_handler handler, void* user) {
    if (!areGiven(client)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        if (handler != nullptr || client->isPolled) {
            listen(*client, handler, user);
        } else {
            client->client.onEvent({});
        }
        return VX_OK;
    });
}

vx_status vx_client_fd(vx_client* client, int* fd) {
    if (!areGiven(client, fd) || !isPolled(*client)) {
        return VX_BAD_PARAMETER;
    }
    const int found = client->client.fd();
    if (found < 0) {
        return fail(VX_FAILED, "the process has no file descriptor left: close some");
    }
    *fd = found;
    return VX_OK;
}

vx_status vx_next_event(vx_client* client, vx_event* event) {
    if (!areGiven(client, event) || !isPolled(*client)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        destination = event;
        const std::size_t count = client->client.dispatch(1);
        destination = nullptr;
        return count == 1 ? VX_OK : fail(VX_NO_EVENT);
    });
}

vx_status vx_dispatch(vx_client* client, size_t* count) {
    if (!areGiven(client) || !isPolled(*client)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        const std::size_t found = client->client.dispatch();
        if (count != nullptr) {
            *count = found;
        }
        return VX_OK;
    });
}
