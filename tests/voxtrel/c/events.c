/* SPDX-License-Identifier: Apache-2.0 */
#include <poll.h>
#include <string.h>
#include <unistd.h>

#include "tests/voxtrel/c/program.h"

#define LIMIT 60000

/* An utterance that is refused at once has its event at once, whether or not there is a service. */
static const char* refused_text = "\xFF";

static int is_readable(int fd, int timeout_ms) {
    struct pollfd polled;

    polled.fd = fd;
    polled.events = POLLIN;
    polled.revents = 0;
    return poll(&polled, 1, timeout_ms) == 1;
}

/* Skips events that are not about utterances. */
static vx_status next_ended(vx_client* client, vx_event* event) {
    vx_status status = vx_next_event(client, event);

    while (status == VX_OK && event->kind != VX_EVENT_ENDED) {
        status = vx_next_event(client, event);
    }
    return status;
}

const char* events_come_one_by_one(void) {
    vx_client* client = client_of(NULL, VX_THREAD_OF_APPLICATION);
    vx_event event;
    int fd = -1;

    REQUIRE(client != NULL && vx_client_fd(client, &fd) == VX_OK && fd >= 0);
    memset(&event, 0, sizeof event);
    event.kind = 99;
    REQUIRE(vx_next_event(client, &event) == VX_NO_EVENT && event.kind == 99);
    REQUIRE(vx_say(client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(vx_say(client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(next_ended(client, &event) == VX_OK && event.utterance == 1);
    REQUIRE(event.outcome.kind == VX_OUTCOME_REFUSED);
    REQUIRE(event.outcome.status == VX_BAD_PARAMETER && event.outcome.heard == 0);
    REQUIRE(strlen(event.outcome.message) > 0 && event.reserved[0] == NULL);
    REQUIRE(is_readable(fd, 0));
    REQUIRE(next_ended(client, &event) == VX_OK && event.utterance == 2);
    REQUIRE(next_ended(client, &event) == VX_NO_EVENT);
    return vx_client_free(client) == VX_OK ? NULL : "the client is not freed";
}

const char* loop_polls_and_takes(void) {
    vx_fake* fake = NULL;
    vx_client* client;
    vx_event event;
    unsigned long started = 0, ended = 0;
    int fd = -1;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    client = client_of(fake, VX_THREAD_OF_APPLICATION);
    REQUIRE(vx_client_fd(client, &fd) == VX_OK);
    REQUIRE(vx_say(client, "One.", NULL, NULL) == VX_OK);
    REQUIRE(vx_pause(client, 10, NULL) == VX_OK);
    REQUIRE(vx_say(client, "Three.", NULL, NULL) == VX_OK);
    while (ended < 3) {
        REQUIRE(is_readable(fd, LIMIT));
        while (vx_next_event(client, &event) == VX_OK) {
            if (event.kind == VX_EVENT_STARTED) {
                ++started;
                REQUIRE(event.utterance == ended + 1);
            } else if (event.kind == VX_EVENT_WORD) {
                REQUIRE(event.utterance == started && event.position.bytes < 6);
            } else if (event.kind == VX_EVENT_ENDED) {
                ++ended;
                REQUIRE(event.utterance == ended && started == ended);
                REQUIRE(event.outcome.kind == VX_OUTCOME_FINISHED);
            }
        }
    }
    REQUIRE(vx_next_event(client, &event) == VX_NO_EVENT && !is_readable(fd, 0));
    REQUIRE(vx_client_free(client) == VX_OK);
    return vx_fake_free(fake) == VX_OK ? NULL : "the fake is not freed";
}

/* Writes a byte to the pipe whose end is the user pointer. */
static void note_end(const vx_event* event, void* user) {
    const char byte = (char)event->utterance;

    if (event->kind == VX_EVENT_ENDED && write(*(const int*)user, &byte, 1) != 1) {
        close(*(const int*)user);
    }
}

const char* handler_has_its_user_pointer(void) {
    vx_client* client = client_of(NULL, VX_THREAD_OF_LIBRARY);
    vx_event event;
    int ends[2];
    int fd = 77;
    size_t count = 77;
    char byte = 0;

    REQUIRE(client != NULL && pipe(ends) == 0);
    REQUIRE(vx_on_event(client, note_end, &ends[1]) == VX_OK);
    REQUIRE(vx_say(client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(is_readable(ends[0], LIMIT) && read(ends[0], &byte, 1) == 1 && byte == 1);
    REQUIRE(vx_client_fd(client, &fd) == VX_BAD_PARAMETER && fd == 77);
    REQUIRE(vx_next_event(client, &event) == VX_BAD_PARAMETER);
    REQUIRE(vx_dispatch(client, &count) == VX_BAD_PARAMETER && count == 77);
    REQUIRE(vx_client_free(client) == VX_OK);
    return close(ends[0]) == 0 && close(ends[1]) == 0 ? NULL : "a pipe is gone";
}

static void count_ends(const vx_event* event, void* user) {
    if (event->kind == VX_EVENT_ENDED) {
        ++*(int*)user;
    }
}

const char* handler_runs_in_dispatch(void) {
    vx_client* client = client_of(NULL, VX_THREAD_OF_APPLICATION);
    vx_event event;
    size_t count = 0;
    int calls = 0;

    REQUIRE(client != NULL && vx_on_event(client, count_ends, &calls) == VX_OK);
    REQUIRE(vx_say(client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(vx_say(client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(calls == 0);
    REQUIRE(vx_dispatch(client, &count) == VX_OK && count >= 2 && calls == 2);
    REQUIRE(vx_say(client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(next_ended(client, &event) == VX_OK && event.utterance == 3 && calls == 2);
    REQUIRE(vx_dispatch(client, NULL) == VX_OK && calls == 2);
    return vx_client_free(client) == VX_OK ? NULL : "the client is not freed";
}

struct owner {
    vx_client* client;
    vx_status freed;
    int pipe_end;
};

static void free_client(const vx_event* event, void* user) {
    struct owner* owner = (struct owner*)user;

    if (event->kind == VX_EVENT_ENDED && owner->client != NULL) {
        owner->freed = vx_client_free(owner->client);
        owner->client = NULL;
        if (write(owner->pipe_end, "", 1) != 1) {
            close(owner->pipe_end);
        }
    }
}

const char* handler_may_free_its_client(void) {
    struct owner owner;
    int ends[2];
    char byte;

    REQUIRE(pipe(ends) == 0);
    owner.client = client_of(NULL, VX_THREAD_OF_LIBRARY);
    owner.freed = VX_FAILED;
    owner.pipe_end = ends[1];
    REQUIRE(owner.client != NULL && vx_on_event(owner.client, free_client, &owner) == VX_OK);
    REQUIRE(vx_say(owner.client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(is_readable(ends[0], LIMIT) && read(ends[0], &byte, 1) == 1);
    REQUIRE(owner.freed == VX_OK);
    return close(ends[0]) == 0 && close(ends[1]) == 0 ? NULL : "a pipe is gone";
}

const char* dispatched_handler_may_free_its_client(void) {
    struct owner owner;
    int ends[2];
    size_t count = 0;

    REQUIRE(pipe(ends) == 0);
    owner.client = client_of(NULL, VX_THREAD_OF_APPLICATION);
    owner.freed = VX_FAILED;
    owner.pipe_end = ends[1];
    REQUIRE(owner.client != NULL && vx_on_event(owner.client, free_client, &owner) == VX_OK);
    REQUIRE(vx_say(owner.client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(vx_dispatch(owner.client, &count) == VX_OK && count >= 1 && owner.freed == VX_OK);
    return close(ends[0]) == 0 && close(ends[1]) == 0 ? NULL : "a pipe is gone";
}

const char* no_handler_is_called_any_more(void) {
    vx_client* client = client_of(NULL, VX_THREAD_OF_APPLICATION);
    vx_event event;
    int calls = 0;

    REQUIRE(client != NULL && vx_on_event(client, count_ends, &calls) == VX_OK);
    REQUIRE(vx_on_event(client, NULL, NULL) == VX_OK);
    REQUIRE(vx_say(client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(vx_dispatch(client, NULL) == VX_OK && calls == 0);
    REQUIRE(vx_say(client, refused_text, NULL, NULL) == VX_OK);
    REQUIRE(next_ended(client, &event) == VX_OK && event.utterance == 2);
    return vx_client_free(client) == VX_OK ? NULL : "the client is not freed";
}
