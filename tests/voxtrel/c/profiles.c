/* SPDX-License-Identifier: Apache-2.0 */
#include <math.h>
#include <string.h>

#include "tests/voxtrel/c/program.h"

const char* profile_keeps_the_defaults(const char* path) {
    vx_fake* fake = NULL;
    vx_client* client;
    vx_options* options = NULL;
    unsigned int speed = 0;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    client = client_of(fake, VX_THREAD_OF_LIBRARY);
    REQUIRE(vx_load_profile(client, path) == VX_PROFILE_ERROR);
    REQUIRE(vx_options_new(&options) == VX_OK);
    REQUIRE(vx_options_set_speed(options, 130) == VX_OK);
    REQUIRE(vx_set_defaults(client, options) == VX_OK);
    REQUIRE(vx_save_profile(client, path) == VX_OK);
    REQUIRE(vx_options_set_speed(options, 90) == VX_OK);
    REQUIRE(vx_set_defaults(client, options) == VX_OK);
    REQUIRE(vx_options_free(options) == VX_OK);
    REQUIRE(vx_load_profile(client, path) == VX_OK);
    REQUIRE(vx_get_defaults(client, &options) == VX_OK);
    REQUIRE(vx_options_get_speed(options, &speed) == VX_OK && speed == 130);
    REQUIRE(vx_options_free(options) == VX_OK);
    REQUIRE(vx_client_free(client) == VX_OK);
    return vx_fake_free(fake) == VX_OK ? NULL : "the fake is not freed";
}

/* The settings of the profile that the tests write into a file. */
static const char* has_the_settings_of_the_file(const vx_profile* profile) {
    vx_settings* settings = NULL;
    const char* tag = NULL;
    unsigned int whole = 0;
    float number = 0;
    int verbosity = 0;

    REQUIRE(vx_profile_get_settings(profile, &settings) == VX_OK);
    REQUIRE(vx_settings_get_language(settings, &tag) == VX_OK && strcmp(tag, "fr-FR") == 0);
    REQUIRE(vx_settings_get_voice(settings, &whole) == VX_OK && whole == 2);
    REQUIRE(vx_settings_get_speed(settings, &whole) == VX_OK && whole == 200);
    REQUIRE(vx_settings_get_rate(settings, &whole) == VX_NOT_SET);
    REQUIRE(vx_settings_get_pitch(settings, &number) == VX_NOT_SET);
    REQUIRE(vx_settings_get_volume(settings, &number) == VX_OK && fabs(number - 80) < 0.001);
    REQUIRE(vx_settings_get_speech_volume(settings, &whole) == VX_OK && whole == 70);
    REQUIRE(vx_settings_get_media_volume(settings, &whole) == VX_OK && whole == 30);
    REQUIRE(vx_settings_get_verbosity(settings, &verbosity) == VX_OK && verbosity == 1);
    return vx_settings_free(settings) == VX_OK ? NULL : "the settings are not freed";
}

const char* profile_is_read_whole(const char* path) {
    vx_profile* profile = NULL;
    vx_profile_output output;
    const char* wrong;
    int which, on;

    REQUIRE(vx_profile_read(path, &profile) == VX_OK);
    wrong = has_the_settings_of_the_file(profile);
    if (wrong != NULL) {
        return wrong;
    }
    for (which = VX_SWITCH_SPEECH; which <= VX_SWITCH_SPEECH_VOLUME; ++which) {
        REQUIRE(vx_profile_is_on(profile, which, &on) == VX_OK);
        REQUIRE(on == (which != VX_SWITCH_PITCH && which != VX_SWITCH_SPEECH));
    }
    memset(&output, 77, sizeof output);
    REQUIRE(vx_profile_get_output(profile, &output) == VX_OK);
    REQUIRE(output.sample_rate == 16000 && output.channels == 2 && output.mixer_path == 3);
    REQUIRE(output.long_break_duration == 4 && output.short_break_duration == 5);
    REQUIRE(output.reserved[0] == NULL && output.reserved[3] == NULL);
    return vx_profile_free(profile) == VX_OK ? NULL : "the profile is not freed";
}

const char* profile_is_changed_and_written(const char* path, const char* copy) {
    vx_profile* profile = NULL;
    vx_settings* settings = NULL;
    unsigned int speed = 0;

    REQUIRE(vx_profile_read(path, &profile) == VX_OK);
    REQUIRE(vx_profile_write(profile, copy) == VX_OK);
    REQUIRE(vx_profile_get_settings(profile, &settings) == VX_OK);
    REQUIRE(vx_settings_set_speed(settings, 90) == VX_OK);
    REQUIRE(vx_profile_write(profile, copy) == VX_OK);
    REQUIRE(vx_profile_set_settings(profile, settings) == VX_OK);
    REQUIRE(vx_settings_set_speed(settings, 91) == VX_OK);
    REQUIRE(vx_profile_turn(profile, VX_SWITCH_SPEECH, 7) == VX_OK);
    REQUIRE(vx_profile_turn(profile, VX_SWITCH_VOICE, 0) == VX_OK);
    REQUIRE(vx_settings_free(settings) == VX_OK);
    REQUIRE(vx_profile_get_settings(profile, &settings) == VX_OK);
    REQUIRE(vx_settings_get_speed(settings, &speed) == VX_OK && speed == 90);
    REQUIRE(vx_settings_free(settings) == VX_OK);
    REQUIRE(vx_profile_write(profile, path) == VX_OK);
    return vx_profile_free(profile) == VX_OK ? NULL : "the profile is not freed";
}

const char* profile_that_cannot_be_is_refused(const char* path, const char* nowhere) {
    vx_profile* profile = NULL;
    vx_settings* settings = NULL;
    const char* why = NULL;
    int on = 7;

    REQUIRE(vx_profile_read(nowhere, &profile) == VX_PROFILE_ERROR && profile == NULL);
    REQUIRE(vx_last_error(&why) == VX_OK && strstr(why, "No such file") != NULL);
    REQUIRE(vx_profile_new(&profile) == VX_OK);
    REQUIRE(vx_profile_write(profile, nowhere) == VX_PROFILE_ERROR);
    REQUIRE(vx_last_error(&why) == VX_OK && strstr(why, nowhere) != NULL);
    REQUIRE(vx_profile_is_on(profile, -1, &on) == VX_BAD_PARAMETER);
    REQUIRE(vx_profile_is_on(profile, 7, &on) == VX_BAD_PARAMETER && on == 7);
    REQUIRE(vx_profile_turn(profile, -1, 1) == VX_BAD_PARAMETER);
    REQUIRE(vx_profile_turn(profile, 7, 1) == VX_BAD_PARAMETER);
    REQUIRE(vx_settings_new(&settings) == VX_OK);
    REQUIRE(vx_settings_set_media_volume(settings, 101) == VX_OK);
    REQUIRE(vx_profile_set_settings(profile, settings) == VX_OK);
    REQUIRE(vx_profile_write(profile, path) == VX_BAD_PARAMETER);
    REQUIRE(vx_settings_free(settings) == VX_OK);
    return vx_profile_free(profile) == VX_OK ? NULL : "the profile is not freed";
}

const char* profile_of_the_device_has_its_place(void) {
    char path[21];

    memset(path, 'x', sizeof path);
    REQUIRE(vx_profile_path_of("radio", path, 19) == VX_BAD_PARAMETER && path[0] == 'x');
    REQUIRE(vx_profile_path_of("radio", path, strlen("radio") + 15) == VX_OK);
    REQUIRE(strcmp(path, "/Customer/radio.ini") == 0 && path[20] == 'x');
    return NULL;
}
