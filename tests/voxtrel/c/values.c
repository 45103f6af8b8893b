/* SPDX-License-Identifier: Apache-2.0 */
#include <math.h>
#include <string.h>

#include "tests/voxtrel/c/program.h"

#define REFUSES(call) REQUIRE((call) == VX_BAD_PARAMETER)

const char* options_keep_what_is_set(void) {
    vx_options* options = NULL;
    const char* text = NULL;
    unsigned int whole = 7;
    float number = 7;
    int on_loss = 7;

    REQUIRE(vx_options_new(&options) == VX_OK);
    REQUIRE(vx_options_get_language(options, &text) == VX_NOT_SET);
    REQUIRE(vx_options_get_voice(options, &text) == VX_NOT_SET);
    REQUIRE(vx_options_get_speed(options, &whole) == VX_NOT_SET);
    REQUIRE(vx_options_get_pitch(options, &number) == VX_NOT_SET);
    REQUIRE(vx_options_get_volume(options, &number) == VX_NOT_SET);
    REQUIRE(vx_options_get_speech_volume(options, &whole) == VX_NOT_SET);
    REQUIRE(vx_options_get_media_volume(options, &whole) == VX_NOT_SET);
    REQUIRE(vx_options_get_on_loss(options, &on_loss) == VX_NOT_SET);
    REQUIRE(text == NULL && whole == 7 && number > 6 && on_loss == 7);

    REQUIRE(vx_options_set_language(options, "fr-FR") == VX_OK);
    REQUIRE(vx_options_set_voice(options, "Claire") == VX_OK);
    REQUIRE(vx_options_set_speed(options, 250) == VX_OK);
    REQUIRE(vx_options_set_pitch(options, 1.5F) == VX_OK);
    REQUIRE(vx_options_set_volume(options, 0.5F) == VX_OK);
    REQUIRE(vx_options_set_speech_volume(options, 60) == VX_OK);
    REQUIRE(vx_options_set_media_volume(options, 20) == VX_OK);
    REQUIRE(vx_options_set_on_loss(options, VX_SAY_AGAIN_WHATEVER) == VX_OK);
    REQUIRE(vx_options_get_language(options, &text) == VX_OK && strcmp(text, "fr-FR") == 0);
    REQUIRE(vx_options_get_voice(options, &text) == VX_OK && strcmp(text, "Claire") == 0);
    REQUIRE(vx_options_get_speed(options, &whole) == VX_OK && whole == 250);
    REQUIRE(vx_options_get_pitch(options, &number) == VX_OK && fabs(number - 1.5) < 0.001);
    REQUIRE(vx_options_get_volume(options, &number) == VX_OK && fabs(number - 0.5) < 0.001);
    REQUIRE(vx_options_get_speech_volume(options, &whole) == VX_OK && whole == 60);
    REQUIRE(vx_options_get_media_volume(options, &whole) == VX_OK && whole == 20);
    REQUIRE(vx_options_get_on_loss(options, &on_loss) == VX_OK && on_loss == VX_SAY_AGAIN_WHATEVER);
    return vx_options_free(options) == VX_OK ? NULL : "the options are not freed";
}

const char* settings_keep_what_is_set(void) {
    vx_settings* settings = NULL;
    const char* text = NULL;
    unsigned int whole = 7;
    float number = 7;
    int verbosity = 7;

    REQUIRE(vx_settings_new(&settings) == VX_OK);
    REQUIRE(vx_settings_get_language(settings, &text) == VX_NOT_SET);
    REQUIRE(vx_settings_get_voice(settings, &whole) == VX_NOT_SET);
    REQUIRE(vx_settings_get_speed(settings, &whole) == VX_NOT_SET);
    REQUIRE(vx_settings_get_rate(settings, &whole) == VX_NOT_SET);
    REQUIRE(vx_settings_get_pitch(settings, &number) == VX_NOT_SET);
    REQUIRE(vx_settings_get_volume(settings, &number) == VX_NOT_SET);
    REQUIRE(vx_settings_get_speech_volume(settings, &whole) == VX_NOT_SET);
    REQUIRE(vx_settings_get_media_volume(settings, &whole) == VX_NOT_SET);
    REQUIRE(vx_settings_get_verbosity(settings, &verbosity) == VX_NOT_SET);
    REQUIRE(text == NULL && whole == 7 && number > 6 && verbosity == 7);

    REQUIRE(vx_settings_set_language(settings, "ko-KR") == VX_OK);
    REQUIRE(vx_settings_set_voice(settings, 2) == VX_OK);
    REQUIRE(vx_settings_set_speed(settings, 90) == VX_OK);
    REQUIRE(vx_settings_set_rate(settings, 110) == VX_OK);
    REQUIRE(vx_settings_set_pitch(settings, 1.5F) == VX_OK);
    REQUIRE(vx_settings_set_volume(settings, 0.5F) == VX_OK);
    REQUIRE(vx_settings_set_speech_volume(settings, 60) == VX_OK);
    REQUIRE(vx_settings_set_media_volume(settings, 20) == VX_OK);
    REQUIRE(vx_settings_set_verbosity(settings, 1) == VX_OK);
    REQUIRE(vx_settings_get_language(settings, &text) == VX_OK && strcmp(text, "ko-KR") == 0);
    REQUIRE(vx_settings_get_voice(settings, &whole) == VX_OK && whole == 2);
    REQUIRE(vx_settings_get_speed(settings, &whole) == VX_OK && whole == 90);
    REQUIRE(vx_settings_get_rate(settings, &whole) == VX_OK && whole == 110);
    REQUIRE(vx_settings_get_pitch(settings, &number) == VX_OK && fabs(number - 1.5) < 0.001);
    REQUIRE(vx_settings_get_volume(settings, &number) == VX_OK && fabs(number - 0.5) < 0.001);
    REQUIRE(vx_settings_get_speech_volume(settings, &whole) == VX_OK && whole == 60);
    REQUIRE(vx_settings_get_media_volume(settings, &whole) == VX_OK && whole == 20);
    REQUIRE(vx_settings_get_verbosity(settings, &verbosity) == VX_OK && verbosity == 1);
    return vx_settings_free(settings) == VX_OK ? NULL : "the settings are not freed";
}

static const char* wrong_options(void) {
    const float infinite = (float)HUGE_VAL;
    vx_options* options = NULL;
    vx_settings* settings = NULL;
    vx_client_options* client_options = NULL;

    REQUIRE(vx_options_new(&options) == VX_OK);
    REQUIRE(vx_settings_new(&settings) == VX_OK);
    REQUIRE(vx_client_options_new(&client_options) == VX_OK);
    REFUSES(vx_options_set_pitch(options, infinite));
    REFUSES(vx_options_set_volume(options, infinite - infinite));
    REFUSES(vx_options_set_on_loss(options, -1));
    REFUSES(vx_options_set_on_loss(options, 3));
    REFUSES(vx_settings_set_pitch(settings, infinite - infinite));
    REFUSES(vx_settings_set_volume(settings, -infinite));
    REFUSES(vx_client_options_set_deadline(client_options, -1));
    REFUSES(vx_client_options_set_linger(client_options, -1));
    REFUSES(vx_client_options_set_handler_thread(client_options, -1));
    REFUSES(vx_client_options_set_handler_thread(client_options, 2));
    REQUIRE(vx_options_free(options) == VX_OK);
    REQUIRE(vx_settings_free(settings) == VX_OK);
    REQUIRE(vx_client_options_free(client_options) == VX_OK);
    return NULL;
}

static const char* wrong_times(vx_client* client, vx_utterance* utterance) {
    vx_settings* settings = NULL;
    vx_settings* found = NULL;
    vx_features* features = NULL;
    vx_diagnosis* diagnosis = NULL;
    vx_lock* lock = NULL;
    int on = 7;

    REQUIRE(vx_settings_new(&settings) == VX_OK);
    REFUSES(vx_wait_until_connected(client, VX_FOREVER));
    REFUSES(vx_stop_everybody(client, -3));
    REFUSES(vx_stop_process(client, 1, -3));
    REFUSES(vx_wait_until_taken(client, -3));
    REFUSES(vx_check_events(client, -3));
    REFUSES(vx_diagnose(client, -3, &diagnosis));
    REFUSES(vx_lock_state(client, -3, &on));
    REFUSES(vx_break_lock(client, -3, NULL));
    REFUSES(vx_get_features(client, -3, &features));
    REFUSES(vx_get_settings(client, -3, &found));
    REFUSES(vx_change_settings(client, settings, -3));
    REFUSES(vx_reset_settings(client, -3));
    REFUSES(vx_is_on(client, VX_SWITCH_SPEECH, -3, &on));
    REFUSES(vx_turn(client, VX_SWITCH_SPEECH, 1, -3));
    REFUSES(vx_take_lock(client, -3, &lock));
    REFUSES(vx_wait_for_all(client, VX_CLIENT_DEADLINE));
    REFUSES(vx_utterance_wait(utterance, VX_CLIENT_DEADLINE, NULL));
    REQUIRE(features == NULL && found == NULL && lock == NULL && on == 7);
    REQUIRE(diagnosis == NULL);
    return vx_settings_free(settings) == VX_OK ? NULL : "the settings are not freed";
}

const char* wrong_values_are_bad_parameters(vx_client* client, vx_utterance* utterance) {
    const char* wrong = wrong_options();
    int on = 7;

    wrong = wrong != NULL ? wrong : wrong_times(client, utterance);
    if (wrong != NULL) {
        return wrong;
    }
    REFUSES(vx_is_on(client, -1, 0, &on));
    REFUSES(vx_is_on(client, 7, 0, &on));
    REFUSES(vx_turn(client, -1, 1, 0));
    REFUSES(vx_turn(client, 7, 1, 0));
    REQUIRE(on == 7);
    return NULL;
}

const char* failures_are_told_in_words(vx_client* client) {
    static const int named[] = {VX_OK,
                                VX_DISABLED,
                                VX_BAD_PARAMETER,
                                VX_NO_SERVICE,
                                VX_PROFILE_ERROR,
                                VX_LOCKED,
                                VX_SERVICE_NOT_FOUND,
                                VX_NOT_SUPPORTED,
                                VX_PERMISSION_DENIED,
                                VX_NO_LANGUAGE,
                                VX_QUEUE_FULL,
                                VX_AUDIO_FAILED,
                                VX_SHUTDOWN,
                                VX_TIMED_OUT,
                                VX_UNRESPONSIVE,
                                VX_LOST,
                                VX_CLOSED,
                                VX_NO_MEMORY,
                                VX_NO_EVENT,
                                VX_NOT_SET,
                                VX_FAILED};
    const char* unnamed = NULL;
    const char* text = NULL;
    size_t i;

    REQUIRE(vx_describe(-42, &unnamed) == VX_OK);
    for (i = 0; i < sizeof named / sizeof named[0]; ++i) {
        REQUIRE(vx_describe(named[i], &text) == VX_OK);
        REQUIRE(strcmp(text, unnamed) != 0 && strchr(text, '\n') == NULL);
    }
    REQUIRE(vx_is_on(client, 7, 0, NULL) == VX_BAD_PARAMETER);
    REQUIRE(vx_last_error(&text) == VX_OK && strstr(text, "null") != NULL);
    REQUIRE(vx_turn(client, 7, 1, 0) == VX_BAD_PARAMETER);
    REQUIRE(vx_last_error(&text) == VX_OK && strstr(text, "switch") != NULL);
    return NULL;
}

const char* defaults_are_copies(vx_client* client) {
    vx_options* options = NULL;
    vx_options* copy = NULL;
    unsigned int speed = 0;

    REQUIRE(vx_options_new(&options) == VX_OK);
    REQUIRE(vx_options_set_speed(options, 90) == VX_OK);
    REQUIRE(vx_set_defaults(client, options) == VX_OK);
    REQUIRE(vx_options_set_speed(options, 120) == VX_OK);
    REQUIRE(vx_get_defaults(client, &copy) == VX_OK);
    REQUIRE(vx_options_get_speed(copy, &speed) == VX_OK && speed == 90);
    REQUIRE(vx_options_free(options) == VX_OK);
    return vx_options_free(copy) == VX_OK ? NULL : "the copy is not freed";
}
