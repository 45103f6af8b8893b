/* SPDX-License-Identifier: Apache-2.0 */
#include "tests/voxtrel/c/program.h"

#define REFUSES(call) REQUIRE((call) == VX_BAD_PARAMETER)

static const char* refused_of_values(void) {
    float number;
    unsigned int whole;
    int any;
    const char* text;

    REFUSES(vx_describe(VX_OK, NULL));
    REFUSES(vx_last_error(NULL));
    REFUSES(vx_options_new(NULL));
    REFUSES(vx_options_free(NULL));
    REFUSES(vx_options_set_language(NULL, "fr"));
    REFUSES(vx_options_set_voice(NULL, "1"));
    REFUSES(vx_options_set_speed(NULL, 100));
    REFUSES(vx_options_set_pitch(NULL, 1));
    REFUSES(vx_options_set_volume(NULL, 1));
    REFUSES(vx_options_set_speech_volume(NULL, 50));
    REFUSES(vx_options_set_media_volume(NULL, 50));
    REFUSES(vx_options_set_on_loss(NULL, VX_REPORT));
    REFUSES(vx_options_get_language(NULL, &text));
    REFUSES(vx_options_get_voice(NULL, &text));
    REFUSES(vx_options_get_speed(NULL, &whole));
    REFUSES(vx_options_get_pitch(NULL, &number));
    REFUSES(vx_options_get_volume(NULL, &number));
    REFUSES(vx_options_get_speech_volume(NULL, &whole));
    REFUSES(vx_options_get_media_volume(NULL, &whole));
    REFUSES(vx_options_get_on_loss(NULL, &any));
    REFUSES(vx_settings_new(NULL));
    REFUSES(vx_settings_free(NULL));
    REFUSES(vx_settings_set_language(NULL, "fr"));
    REFUSES(vx_settings_set_voice(NULL, 1));
    REFUSES(vx_settings_set_speed(NULL, 100));
    REFUSES(vx_settings_set_rate(NULL, 100));
    REFUSES(vx_settings_set_pitch(NULL, 1));
    REFUSES(vx_settings_set_volume(NULL, 1));
    REFUSES(vx_settings_set_speech_volume(NULL, 50));
    REFUSES(vx_settings_set_media_volume(NULL, 50));
    REFUSES(vx_settings_set_verbosity(NULL, 1));
    REFUSES(vx_settings_get_language(NULL, &text));
    REFUSES(vx_settings_get_voice(NULL, &whole));
    REFUSES(vx_settings_get_speed(NULL, &whole));
    REFUSES(vx_settings_get_rate(NULL, &whole));
    REFUSES(vx_settings_get_pitch(NULL, &number));
    REFUSES(vx_settings_get_volume(NULL, &number));
    REFUSES(vx_settings_get_speech_volume(NULL, &whole));
    REFUSES(vx_settings_get_media_volume(NULL, &whole));
    REFUSES(vx_settings_get_verbosity(NULL, &any));
    return NULL;
}

static const char* refused_of_clients(void) {
    vx_options* options = NULL;
    vx_utterance* utterance = NULL;
    vx_diagnosis* diagnosis = NULL;
    vx_outcome outcome;
    vx_position position;
    vx_event event;
    vx_peer peer;
    const char* text;
    unsigned long number;
    size_t count;
    int any;

    REQUIRE(vx_options_new(&options) == VX_OK);
    REFUSES(vx_client_options_new(NULL));
    REFUSES(vx_client_options_free(NULL));
    REFUSES(vx_client_options_set_deadline(NULL, 1));
    REFUSES(vx_client_options_set_linger(NULL, 1));
    REFUSES(vx_client_options_set_handler_thread(NULL, VX_THREAD_OF_LIBRARY));
    REFUSES(vx_client_options_set_fake(NULL, NULL));
    REFUSES(vx_client_new("app", NULL, NULL));
    REFUSES(vx_client_free(NULL));
    REFUSES(vx_is_connected(NULL, &any));
    REFUSES(vx_diagnose(NULL, 0, &diagnosis));
    REFUSES(vx_diagnosis_free(NULL));
    REFUSES(vx_diagnosis_reach(NULL, &any));
    REFUSES(vx_diagnosis_why_not(NULL, &any, &text));
    REFUSES(vx_diagnosis_transport(NULL, &text));
    REFUSES(vx_diagnosis_path(NULL, &text));
    REFUSES(vx_diagnosis_error(NULL, &any));
    REFUSES(vx_diagnosis_manager(NULL, &peer));
    REFUSES(vx_diagnosis_service(NULL, &peer));
    REFUSES(vx_diagnosis_takes_any_pause(NULL, &any));
    REFUSES(vx_client_options_trust_user(NULL, 1));
    REFUSES(vx_wait_until_connected(NULL, 0));
    REFUSES(vx_set_defaults(NULL, options));
    REFUSES(vx_get_defaults(NULL, &options));
    REFUSES(vx_say(NULL, "Hello.", NULL, &utterance));
    REFUSES(vx_pause(NULL, 10, &utterance));
    REFUSES(vx_stop(NULL));
    REFUSES(vx_stop_everybody(NULL, 0));
    REFUSES(vx_stop_process(NULL, 1, 0));
    REFUSES(vx_wait_until_taken(NULL, 0));
    REFUSES(vx_check_events(NULL, 0));
    REFUSES(vx_wait_for_all(NULL, 0));
    REFUSES(vx_utterance_number(NULL, &number));
    REFUSES(vx_utterance_outcome(NULL, &outcome));
    REFUSES(vx_utterance_wait(NULL, 0, &outcome));
    REFUSES(vx_utterance_position(NULL, &position));
    REFUSES(vx_utterance_free(NULL));
    REFUSES(vx_on_event(NULL, NULL, NULL));
    REFUSES(vx_client_fd(NULL, &any));
    REFUSES(vx_next_event(NULL, &event));
    REFUSES(vx_dispatch(NULL, &count));
    REQUIRE(utterance == NULL && diagnosis == NULL);
    REQUIRE(vx_options_free(options) == VX_OK);
    return NULL;
}

static const char* refused_of_the_service(void) {
    vx_features* features = NULL;
    vx_settings* settings = NULL;
    vx_lock* lock = NULL;
    vx_voice voice;
    const char* text;
    float least, most;
    unsigned int least_speed, most_speed;
    size_t count;
    int any;

    REQUIRE(vx_settings_new(&settings) == VX_OK);
    REFUSES(vx_get_features(NULL, 0, &features));
    REFUSES(vx_features_free(NULL));
    REFUSES(vx_features_speed(NULL, &least_speed, &most_speed));
    REFUSES(vx_features_pitch(NULL, &least, &most));
    REFUSES(vx_features_volume(NULL, &least, &most));
    REFUSES(vx_features_language_count(NULL, &count));
    REFUSES(vx_features_language(NULL, 0, &text));
    REFUSES(vx_features_voice_count(NULL, &count));
    REFUSES(vx_features_voice(NULL, 0, &voice));
    REFUSES(vx_features_filtered_language_count(NULL, &count));
    REFUSES(vx_features_filtered_language(NULL, 0, &text));
    REFUSES(vx_features_filtered_voice_count(NULL, &count));
    REFUSES(vx_features_filtered_voice(NULL, 0, &voice));
    REFUSES(vx_get_settings(NULL, 0, &settings));
    REFUSES(vx_change_settings(NULL, settings, 0));
    REFUSES(vx_reset_settings(NULL, 0));
    REFUSES(vx_is_on(NULL, VX_SWITCH_SPEECH, 0, &any));
    REFUSES(vx_turn(NULL, VX_SWITCH_SPEECH, 1, 0));
    REFUSES(vx_take_lock(NULL, 0, &lock));
    REFUSES(vx_lock_is_held(NULL, &any));
    REFUSES(vx_lock_free(NULL));
    REFUSES(vx_lock_state(NULL, 0, &any));
    REFUSES(vx_break_lock(NULL, 0, &least_speed));
    REQUIRE(features == NULL && lock == NULL);
    REQUIRE(vx_settings_free(settings) == VX_OK);
    return NULL;
}

static const char* refused_of_profiles(void) {
    vx_profile* profile = NULL;
    vx_settings* settings = NULL;
    vx_profile_output output;
    char path[64];
    int on;

    REQUIRE(vx_profile_new(&profile) == VX_OK);
    REFUSES(vx_save_profile(NULL, "/tmp/profile"));
    REFUSES(vx_load_profile(NULL, "/tmp/profile"));
    REFUSES(vx_profile_new(NULL));
    REFUSES(vx_profile_free(NULL));
    REFUSES(vx_profile_path_of(NULL, path, sizeof path));
    REFUSES(vx_profile_path_of("radio", NULL, sizeof path));
    REFUSES(vx_profile_read(NULL, &profile));
    REFUSES(vx_profile_read("/tmp/profile", NULL));
    REFUSES(vx_profile_write(NULL, "/tmp/profile"));
    REFUSES(vx_profile_write(profile, NULL));
    REFUSES(vx_profile_get_settings(NULL, &settings));
    REFUSES(vx_profile_get_settings(profile, NULL));
    REFUSES(vx_profile_set_settings(NULL, settings));
    REFUSES(vx_profile_set_settings(profile, NULL));
    REFUSES(vx_profile_is_on(NULL, VX_SWITCH_SPEECH, &on));
    REFUSES(vx_profile_is_on(profile, VX_SWITCH_SPEECH, NULL));
    REFUSES(vx_profile_turn(NULL, VX_SWITCH_SPEECH, 1));
    REFUSES(vx_profile_get_output(NULL, &output));
    REFUSES(vx_profile_get_output(profile, NULL));
    REQUIRE(settings == NULL);
    REQUIRE(vx_profile_free(profile) == VX_OK);
    return NULL;
}

static const char* refused_of_the_fake(void) {
    vx_texts* texts = NULL;
    const char* text;
    size_t count;

    REFUSES(vx_fake_new(NULL));
    REFUSES(vx_fake_free(NULL));
    REFUSES(vx_texts_count(NULL, &count));
    REFUSES(vx_texts_get(NULL, 0, &text));
    REFUSES(vx_texts_free(NULL));
    REFUSES(vx_fake_spoken(NULL, &texts));
    REFUSES(vx_fake_wait_for_spoken(NULL, 0, 0));
    REFUSES(vx_fake_requests(NULL, &texts));
    REFUSES(vx_fake_hold(NULL));
    REFUSES(vx_fake_go_on(NULL));
    REFUSES(vx_fake_refuse_next(NULL, VX_QUEUE_FULL));
    REFUSES(vx_fake_lose_next_request(NULL));
    REFUSES(vx_fake_lose_next_event(NULL, VX_EVENT_ENDED));
    REFUSES(vx_fake_freeze(NULL));
    REFUSES(vx_fake_thaw(NULL));
    REFUSES(vx_fake_answer_after(NULL, 0));
    REFUSES(vx_fake_die(NULL));
    REFUSES(vx_fake_shut_down(NULL));
    REFUSES(vx_fake_come_back(NULL));
    REFUSES(vx_fake_stop_by_another(NULL));
    REFUSES(vx_fake_lock_by_another(NULL, 1));
    REFUSES(vx_fake_unlock_by_another(NULL));
    REQUIRE(texts == NULL);
    return NULL;
}

const char* null_handles_are_bad_parameters(void) {
    const char* wrong = refused_of_values();
    wrong = wrong != NULL ? wrong : refused_of_clients();
    wrong = wrong != NULL ? wrong : refused_of_the_service();
    wrong = wrong != NULL ? wrong : refused_of_profiles();
    return wrong != NULL ? wrong : refused_of_the_fake();
}

const char* null_pointers_are_bad_parameters(vx_client* client, vx_utterance* utterance) {
    vx_options* options = NULL;
    vx_settings* settings = NULL;
    vx_utterance* said = NULL;

    REQUIRE(vx_options_new(&options) == VX_OK);
    REQUIRE(vx_settings_new(&settings) == VX_OK);
    REFUSES(vx_options_set_language(options, NULL));
    REFUSES(vx_options_set_voice(options, NULL));
    REFUSES(vx_options_get_language(options, NULL));
    REFUSES(vx_options_get_speed(options, NULL));
    REFUSES(vx_options_get_on_loss(options, NULL));
    REFUSES(vx_settings_set_language(settings, NULL));
    REFUSES(vx_settings_get_pitch(settings, NULL));
    REFUSES(vx_say(client, NULL, options, &said));
    REFUSES(vx_is_connected(client, NULL));
    REFUSES(vx_diagnose(client, 0, NULL));
    REFUSES(vx_lock_state(client, 0, NULL));
    REFUSES(vx_set_defaults(client, NULL));
    REFUSES(vx_get_defaults(client, NULL));
    REFUSES(vx_client_fd(client, NULL));
    REFUSES(vx_next_event(client, NULL));
    REFUSES(vx_get_features(client, 0, NULL));
    REFUSES(vx_get_settings(client, 0, NULL));
    REFUSES(vx_change_settings(client, NULL, 0));
    REFUSES(vx_is_on(client, VX_SWITCH_SPEECH, 0, NULL));
    REFUSES(vx_take_lock(client, 0, NULL));
    REFUSES(vx_save_profile(client, NULL));
    REFUSES(vx_load_profile(client, NULL));
    REFUSES(vx_utterance_number(utterance, NULL));
    REFUSES(vx_utterance_outcome(utterance, NULL));
    REFUSES(vx_utterance_position(utterance, NULL));
    REQUIRE(said == NULL);
    REQUIRE(vx_options_free(options) == VX_OK);
    REQUIRE(vx_settings_free(settings) == VX_OK);
    return NULL;
}
