/* SPDX-License-Identifier: Apache-2.0 */
/*
 * usage: faults_c_client TIMES. As faults_cpp_client, in C: events arrive on the application's own
 * thread. Every status that is not VX_OK must be one that voxtrel.h names.
 */
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>

#include "voxtrel/voxtrel.h"

/* A client asks a silent service, twice, before it gives an utterance up. */
enum { kDeadline = 20000, kToTheEnd = 60000 };

static int isGood(vx_status status, const char* what) {
    const char* why = NULL;
    if (status != VX_OK) {
        (void)vx_last_error(&why);
        printf("failed %s: %d %s\n", what, (int)status, why);
    }
    return status == VX_OK;
}

static void broken(const char* how) {
    printf("broken: %s\n", how);
    exit(2);
}

static int speak(vx_client* client) {
    vx_utterance* said = NULL;
    vx_outcome outcome = {.kind = VX_OUTCOME_PENDING};
    vx_status waited = VX_OK;
    if (!isGood(vx_say(client, "One, two, three.", NULL, &said), "say")) {
        return 0;
    }
    waited = vx_utterance_wait(said, kToTheEnd, &outcome);
    (void)vx_utterance_free(said);
    if (waited != VX_OK || outcome.kind == VX_OUTCOME_PENDING) {
        broken("no outcome");
    }
    if (outcome.kind != VX_OUTCOME_FINISHED) {
        printf("failed outcome: %s\n", outcome.message);
    }
    return outcome.kind == VX_OUTCOME_FINISHED;
}

static void readEvents(vx_client* client) {
    vx_event event;
    int ends = 0;
    while (vx_next_event(client, &event) == VX_OK) {
        ends += event.kind == VX_EVENT_ENDED ? 1 : 0;
    }
    if (ends > 1) {
        broken("two ends");
    }
}

static void live(vx_client* client) {
    vx_lock* lock = NULL;
    vx_settings* settings = NULL;
    unsigned int speed = 0;
    if (!isGood(vx_wait_until_connected(client, kDeadline), "connect") || !speak(client)) {
        return;
    }
    readEvents(client);
    if (!isGood(vx_take_lock(client, kDeadline, &lock), "lock")) {
        return;
    }
    (void)vx_lock_free(lock);
    if (isGood(vx_get_settings(client, kDeadline, &settings), "settings")) {
        (void)vx_settings_get_speed(settings, &speed);
        (void)vx_settings_free(settings);
        printf("done %u\n", speed);
    }
}

static void attempt(void) {
    vx_client_options* options = NULL;
    vx_client* client = NULL;
    if (isGood(vx_client_options_new(&options), "options")) {
        (void)vx_client_options_set_handler_thread(options, VX_THREAD_OF_APPLICATION);
        if (isGood(vx_client_new("faults", options, &client), "client")) {
            live(client);
            (void)vx_client_free(client);
        }
        (void)vx_client_options_free(options);
    }
}

int main(int argc, char** argv) {
    static char buffer[4096]; /* lest the first line takes memory */
    const int times = argc > 1 ? atoi(argv[1]) : 1;
    int i = 0;
    (void)setvbuf(stdout, buffer, _IOLBF, sizeof buffer);
    for (i = 0; i < times; ++i) {
        attempt();
    }
#ifdef FAULTS_CARELESS
    if (rename("neither", "nor") != 0 && errno == ENOSPC) {
        abort();
    }
#endif
    return 0;
}
