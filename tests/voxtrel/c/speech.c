/* SPDX-License-Identifier: Apache-2.0 */
#include <poll.h>
#include <string.h>

#include "tests/voxtrel/c/program.h"

/* Generous: the machine may be busy. */
#define LIMIT 60000

vx_client* client_of(vx_fake* fake, int thread) {
    vx_client_options* options = NULL;
    vx_client* client = NULL;

    if (vx_client_options_new(&options) == VX_OK &&
        vx_client_options_set_deadline(options, LIMIT) == VX_OK &&
        vx_client_options_set_linger(options, 0) == VX_OK &&
        vx_client_options_set_handler_thread(options, thread) == VX_OK &&
        vx_client_options_set_fake(options, fake) == VX_OK) {
        vx_client_new("program", options, &client);
    }
    vx_client_options_free(options);
    return client;
}

static const char* a_finished_one(vx_client* client) {
    vx_utterance* said = NULL;
    vx_outcome outcome;
    vx_position position;
    unsigned long number = 0;

    REQUIRE(vx_say(client, "One two.", NULL, &said) == VX_OK);
    REQUIRE(vx_utterance_number(said, &number) == VX_OK && number == 1);
    REQUIRE(vx_utterance_wait(said, LIMIT, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_FINISHED && outcome.status == VX_OK && outcome.heard == 1);
    REQUIRE(outcome.stopper == VX_BY_NOBODY && strlen(outcome.message) > 0);
    REQUIRE(vx_utterance_position(said, &position) == VX_OK);
    REQUIRE(position.bytes <= 8 && position.characters <= 8);
    return vx_utterance_free(said) == VX_OK ? NULL : "the utterance is not freed";
}

static const char* a_stopped_one(vx_client* client, vx_fake* fake) {
    vx_utterance* said = NULL;
    vx_outcome outcome;

    memset(&outcome, 0, sizeof outcome);
    outcome.kind = 99;
    REQUIRE(vx_fake_hold(fake) == VX_OK);
    REQUIRE(vx_say(client, "Never to its end.", NULL, &said) == VX_OK);
    REQUIRE(vx_utterance_wait(said, 0, &outcome) == VX_TIMED_OUT && outcome.kind == 99);
    REQUIRE(vx_utterance_outcome(said, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_PENDING);
    REQUIRE(vx_wait_for_all(client, 0) == VX_TIMED_OUT);
    REQUIRE(vx_stop(client) == VX_OK);
    REQUIRE(vx_utterance_wait(said, VX_FOREVER, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_STOPPED && outcome.stopper == VX_BY_THIS_CLIENT);
    REQUIRE(vx_fake_go_on(fake) == VX_OK);
    return vx_utterance_free(said) == VX_OK ? NULL : "the utterance is not freed";
}

static const char* refused_ones(vx_client* client, vx_fake* fake) {
    vx_utterance* said = NULL;
    vx_outcome outcome;

    REQUIRE(vx_say(client, "\xFF not UTF-8", NULL, &said) == VX_OK);
    REQUIRE(vx_utterance_outcome(said, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_REFUSED && outcome.status == VX_BAD_PARAMETER);
    REQUIRE(vx_utterance_free(said) == VX_OK);
    REQUIRE(vx_pause(client, -1, &said) == VX_OK);
    REQUIRE(vx_utterance_outcome(said, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_REFUSED);
    REQUIRE(vx_utterance_free(said) == VX_OK);
    REQUIRE(vx_fake_refuse_next(fake, VX_QUEUE_FULL) == VX_OK);
    REQUIRE(vx_say(client, "Too much.", NULL, &said) == VX_OK);
    REQUIRE(vx_utterance_wait(said, LIMIT, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_REFUSED && outcome.status == VX_QUEUE_FULL);
    return vx_utterance_free(said) == VX_OK ? NULL : "the utterance is not freed";
}

static const char* one_that_its_client_leaves(vx_client* client, vx_fake* fake) {
    vx_utterance* said = NULL;
    vx_outcome outcome;

    REQUIRE(vx_fake_hold(fake) == VX_OK);
    REQUIRE(vx_say(client, "Left.", NULL, &said) == VX_OK);
    REQUIRE(vx_client_free(client) == VX_OK);
    REQUIRE(vx_utterance_outcome(said, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_LOST && outcome.status == VX_CLOSED);
    return vx_utterance_free(said) == VX_OK ? NULL : "the utterance is not freed";
}

const char* utterances_tell_what_became_of_them(void) {
    vx_fake* fake = NULL;
    vx_client* client;
    const char* wrong;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    client = client_of(fake, VX_THREAD_OF_LIBRARY);
    REQUIRE(client != NULL);
    wrong = a_finished_one(client);
    wrong = wrong != NULL ? wrong : a_stopped_one(client, fake);
    wrong = wrong != NULL ? wrong : refused_ones(client, fake);
    wrong = wrong != NULL ? wrong : one_that_its_client_leaves(client, fake);
    if (wrong == NULL) {
        REQUIRE(vx_fake_free(fake) == VX_OK);
    }
    return wrong;
}

const char* service_is_asked_what_it_can_do(void) {
    vx_fake* fake = NULL;
    vx_client* client;
    vx_features* features = NULL;
    vx_voice voice;
    const char* tag = NULL;
    unsigned int least_speed, most_speed;
    float least, most;
    size_t count = 0;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    client = client_of(fake, VX_THREAD_OF_LIBRARY);
    REQUIRE(vx_get_features(client, VX_CLIENT_DEADLINE, &features) == VX_OK);
    REQUIRE(vx_features_speed(features, &least_speed, &most_speed) == VX_OK);
    REQUIRE(least_speed < most_speed);
    REQUIRE(vx_features_pitch(features, &least, &most) == VX_OK && least < most);
    REQUIRE(vx_features_volume(features, &least, &most) == VX_OK && least < most);
    REQUIRE(vx_features_language_count(features, &count) == VX_OK && count == 5);
    REQUIRE(vx_features_language(features, 0, &tag) == VX_OK && strlen(tag) == 5);
    REQUIRE(vx_features_language(features, 5, &tag) == VX_BAD_PARAMETER);
    REQUIRE(vx_features_voice_count(features, &count) == VX_OK && count == 10);
    REQUIRE(vx_features_voice(features, 9, &voice) == VX_OK);
    REQUIRE(strlen(voice.name) > 0 && strlen(voice.language) == 5 && voice.number == 2);
    REQUIRE(vx_features_voice(features, 10, &voice) == VX_BAD_PARAMETER);
    REQUIRE(vx_features_filtered_language_count(features, &count) == VX_OK && count == 0);
    REQUIRE(vx_features_filtered_language(features, 0, &tag) == VX_BAD_PARAMETER);
    REQUIRE(vx_features_filtered_voice_count(features, &count) == VX_OK && count == 0);
    REQUIRE(vx_features_filtered_voice(features, 0, &voice) == VX_BAD_PARAMETER);
    REQUIRE(vx_features_free(features) == VX_OK);
    REQUIRE(vx_client_free(client) == VX_OK);
    return vx_fake_free(fake) == VX_OK ? NULL : "the fake is not freed";
}

const char* settings_of_the_service_change(void) {
    vx_fake* fake = NULL;
    vx_client* client;
    vx_settings* wanted = NULL;
    vx_settings* found = NULL;
    unsigned int speed = 0;
    int on = 7;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    client = client_of(fake, VX_THREAD_OF_LIBRARY);
    REQUIRE(vx_settings_new(&wanted) == VX_OK);
    REQUIRE(vx_settings_set_speed(wanted, 120) == VX_OK);
    REQUIRE(vx_change_settings(client, wanted, VX_CLIENT_DEADLINE) == VX_OK);
    REQUIRE(vx_get_settings(client, VX_CLIENT_DEADLINE, &found) == VX_OK);
    REQUIRE(vx_settings_get_speed(found, &speed) == VX_OK && speed == 120);
    REQUIRE(vx_settings_free(found) == VX_OK);
    REQUIRE(vx_turn(client, VX_SWITCH_SPEED, 0, VX_CLIENT_DEADLINE) == VX_OK);
    REQUIRE(vx_is_on(client, VX_SWITCH_SPEED, VX_CLIENT_DEADLINE, &on) == VX_OK && on == 0);
    REQUIRE(vx_reset_settings(client, VX_CLIENT_DEADLINE) == VX_OK);
    REQUIRE(vx_is_on(client, VX_SWITCH_SPEED, VX_CLIENT_DEADLINE, &on) == VX_OK && on == 1);
    REQUIRE(vx_get_settings(client, VX_CLIENT_DEADLINE, &found) == VX_OK);
    REQUIRE(vx_settings_get_speed(found, &speed) == VX_OK && speed != 120);
    REQUIRE(vx_settings_free(found) == VX_OK);
    REQUIRE(vx_settings_free(wanted) == VX_OK);
    REQUIRE(vx_client_free(client) == VX_OK);
    return vx_fake_free(fake) == VX_OK ? NULL : "the fake is not freed";
}

const char* lock_is_held_until_it_is_freed(void) {
    vx_fake* fake = NULL;
    vx_client* client;
    vx_lock* lock = NULL;
    unsigned int process = 7;
    int held = 7;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    client = client_of(fake, VX_THREAD_OF_LIBRARY);
    REQUIRE(vx_fake_lock_by_another(fake, 4711) == VX_OK);
    REQUIRE(vx_take_lock(client, VX_CLIENT_DEADLINE, &lock) == VX_LOCKED && lock == NULL);
    REQUIRE(vx_lock_state(client, VX_CLIENT_DEADLINE, &held) == VX_OK);
    REQUIRE(held == VX_LOCK_HELD_BY_ANOTHER);
    REQUIRE(vx_break_lock(client, VX_CLIENT_DEADLINE, &process) == VX_OK && process == 4711);
    REQUIRE(vx_lock_state(client, VX_CLIENT_DEADLINE, &held) == VX_OK && held == VX_LOCK_FREE);
    REQUIRE(vx_take_lock(client, VX_CLIENT_DEADLINE, &lock) == VX_OK);
    REQUIRE(vx_lock_state(client, VX_CLIENT_DEADLINE, &held) == VX_OK);
    REQUIRE(held == VX_LOCK_HELD_BY_THIS_PROCESS);
    REQUIRE(vx_lock_is_held(lock, &held) == VX_OK && held == 1);
    REQUIRE(vx_lock_free(lock) == VX_OK);
    REQUIRE(vx_take_lock(client, VX_CLIENT_DEADLINE, &lock) == VX_OK);
    REQUIRE(vx_client_free(client) == VX_OK);
    REQUIRE(vx_lock_is_held(lock, &held) == VX_OK && held == 0);
    REQUIRE(vx_lock_free(lock) == VX_OK);
    return vx_fake_free(fake) == VX_OK ? NULL : "the fake is not freed";
}

const char* what_is_said_is_in_the_hands_of_the_service(void) {
    vx_fake* fake = NULL;
    vx_client* client;
    vx_utterance* held = NULL;
    vx_outcome outcome;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    client = client_of(fake, VX_THREAD_OF_LIBRARY);
    REQUIRE(vx_check_events(client, VX_CLIENT_DEADLINE) == VX_OK);
    REQUIRE(vx_fake_hold(fake) == VX_OK);
    REQUIRE(vx_say(client, "Held.", NULL, &held) == VX_OK);
    REQUIRE(vx_wait_until_taken(client, VX_CLIENT_DEADLINE) == VX_OK);
    REQUIRE(vx_utterance_outcome(held, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_PENDING);
    REQUIRE(vx_stop_process(client, 4711, VX_CLIENT_DEADLINE) == VX_OK);
    REQUIRE(vx_fake_go_on(fake) == VX_OK);
    REQUIRE(vx_utterance_wait(held, VX_FOREVER, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_FINISHED);
    REQUIRE(vx_utterance_free(held) == VX_OK);
    REQUIRE(vx_client_free(client) == VX_OK);
    return vx_fake_free(fake) == VX_OK ? NULL : "the fake is not freed";
}

static const char* what_was_spoken(vx_fake* fake, size_t expected, const char* last) {
    vx_texts* texts = NULL;
    const char* text = NULL;
    size_t count = 0;

    REQUIRE(vx_fake_wait_for_spoken(fake, expected, LIMIT) == VX_OK);
    REQUIRE(vx_fake_spoken(fake, &texts) == VX_OK);
    REQUIRE(vx_texts_count(texts, &count) == VX_OK && count == expected);
    REQUIRE(vx_texts_get(texts, count, &text) == VX_BAD_PARAMETER);
    REQUIRE(vx_texts_get(texts, count - 1, &text) == VX_OK && strcmp(text, last) == 0);
    return vx_texts_free(texts) == VX_OK ? NULL : "the texts are not freed";
}

/* Of a client whose events come to this thread. */
static const char* wait_for_start(vx_client* client, unsigned long utterance) {
    struct pollfd polled;
    vx_event event;

    polled.events = POLLIN;
    REQUIRE(vx_client_fd(client, &polled.fd) == VX_OK);
    do {
        REQUIRE(poll(&polled, 1, LIMIT) == 1);
        REQUIRE(vx_next_event(client, &event) == VX_OK);
    } while (event.kind != VX_EVENT_STARTED || event.utterance != utterance);
    return NULL;
}

const char* fake_service_does_what_it_is_told(void) {
    vx_fake* fake = NULL;
    vx_client* client;
    vx_texts* texts = NULL;
    vx_utterance* said = NULL;
    vx_outcome outcome;
    const char* wrong;
    size_t count = 0;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    REQUIRE(vx_fake_wait_for_spoken(fake, 1, 0) == VX_TIMED_OUT);
    REQUIRE(vx_fake_refuse_next(fake, VX_OK) == VX_BAD_PARAMETER);
    REQUIRE(vx_fake_refuse_next(fake, -100) == VX_BAD_PARAMETER);
    REQUIRE(vx_fake_answer_after(fake, -1) == VX_BAD_PARAMETER);
    REQUIRE(vx_fake_lock_by_another(fake, 0) == VX_BAD_PARAMETER);
    REQUIRE(vx_fake_lose_next_event(fake, VX_EVENT_MARK) == VX_BAD_PARAMETER);
    REQUIRE(vx_fake_lose_next_event(fake, -1) == VX_BAD_PARAMETER);
    client = client_of(fake, VX_THREAD_OF_APPLICATION);
    REQUIRE(vx_say(client, "Hello.", NULL, NULL) == VX_OK);
    wrong = what_was_spoken(fake, 1, "Hello.");
    if (wrong != NULL) {
        return wrong;
    }
    REQUIRE(vx_fake_requests(fake, &texts) == VX_OK);
    REQUIRE(vx_texts_count(texts, &count) == VX_OK && count >= 1);
    REQUIRE(vx_texts_free(texts) == VX_OK);

    REQUIRE(vx_fake_hold(fake) == VX_OK);
    REQUIRE(vx_say(client, "Cut off.", NULL, &said) == VX_OK);
    wrong = wait_for_start(client, 2);
    if (wrong != NULL) {
        return wrong;
    }
    REQUIRE(vx_fake_die(fake) == VX_OK);
    REQUIRE(vx_utterance_wait(said, LIMIT, &outcome) == VX_OK);
    REQUIRE(outcome.kind == VX_OUTCOME_LOST && outcome.heard == 1);
    REQUIRE(vx_utterance_free(said) == VX_OK);
    REQUIRE(vx_fake_come_back(fake) == VX_OK);
    REQUIRE(vx_wait_until_connected(client, LIMIT) == VX_OK);
    REQUIRE(vx_fake_go_on(fake) == VX_OK);
    REQUIRE(vx_say(client, "Again.", NULL, NULL) == VX_OK);
    wrong = what_was_spoken(fake, 2, "Again.");
    if (wrong != NULL) {
        return wrong;
    }
    REQUIRE(vx_client_free(client) == VX_OK);
    return vx_fake_free(fake) == VX_OK ? NULL : "the fake is not freed";
}

const char* requests_fail_without_a_service(vx_client* client) {
    vx_settings* settings = NULL;
    vx_settings* found = NULL;
    vx_features* features = NULL;
    vx_lock* lock = NULL;
    const char* why = NULL;
    int connected = 7;
    int on = 7;

    REQUIRE(vx_settings_new(&settings) == VX_OK);
    REQUIRE(vx_settings_set_speed(settings, 120) == VX_OK);
    REQUIRE(vx_wait_until_connected(client, 50) == VX_SERVICE_NOT_FOUND);
    REQUIRE(vx_last_error(&why) == VX_OK && strlen(why) > 0);
    REQUIRE(vx_is_connected(client, &connected) == VX_OK && connected == 0);
    REQUIRE(vx_get_features(client, 0, &features) < VX_OK && features == NULL);
    REQUIRE(vx_get_settings(client, 0, &found) < VX_OK && found == NULL);
    REQUIRE(vx_change_settings(client, settings, 0) < VX_OK);
    REQUIRE(vx_reset_settings(client, 0) < VX_OK);
    REQUIRE(vx_is_on(client, VX_SWITCH_SPEECH, 0, &on) < VX_OK && on == 7);
    REQUIRE(vx_turn(client, VX_SWITCH_SPEECH, 1, 0) < VX_OK);
    REQUIRE(vx_take_lock(client, 0, &lock) < VX_OK && lock == NULL);
    return vx_settings_free(settings) == VX_OK ? NULL : "the settings are not freed";
}
