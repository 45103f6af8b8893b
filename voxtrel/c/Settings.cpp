// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"
#include "voxtrel/c/Values.h"

using namespace voxtrel::c;
using voxtrel::GlobalSettings;
using voxtrel::Switch;

vx_status vx_settings_new(vx_settings** settings) {
    return create(settings);
}

vx_status vx_settings_free(vx_settings* settings) {
    return destroy(settings);
}

vx_status vx_settings_set_language(vx_settings* settings, const char* tag) {
    return set(settings, &GlobalSettings::language, tag);
}

vx_status vx_settings_set_voice(vx_settings* settings, unsigned int number) {
    return set(settings, &GlobalSettings::voice, number);
}

vx_status vx_settings_set_speed(vx_settings* settings, unsigned int speed) {
    return set(settings, &GlobalSettings::speed, speed);
}

vx_status vx_settings_set_rate(vx_settings* settings, unsigned int rate) {
    return set(settings, &GlobalSettings::rate, rate);
}

vx_status vx_settings_set_pitch(vx_settings* settings, float pitch) {
    return set(settings, &GlobalSettings::pitch, pitch);
}

vx_status vx_settings_set_volume(vx_settings* settings, float volume) {
    return set(settings, &GlobalSettings::volume, volume);
}

vx_status vx_settings_set_speech_volume(vx_settings* settings, unsigned int percent) {
    return set(settings, &GlobalSettings::speechVolume, percent);
}

vx_status vx_settings_set_media_volume(vx_settings* settings, unsigned int percent) {
    return set(settings, &GlobalSettings::mediaVolume, percent);
}

vx_status vx_settings_set_verbosity(vx_settings* settings, int verbosity) {
    return set(settings, &GlobalSettings::verbosity, verbosity);
}

vx_status vx_settings_get_language(const vx_settings* settings, const char** tag) {
    return get(settings, &GlobalSettings::language, tag);
}

vx_status vx_settings_get_voice(const vx_settings* settings, unsigned int* number) {
    return get(settings, &GlobalSettings::voice, number);
}

vx_status vx_settings_get_speed(const vx_settings* settings, unsigned int* speed) {
    return get(settings, &GlobalSettings::speed, speed);
}

vx_status vx_settings_get_rate(const vx_settings* settings, unsigned int* rate) {
    return get(settings, &GlobalSettings::rate, rate);
}

vx_status vx_settings_get_pitch(const vx_settings* settings, float* pitch) {
    return get(settings, &GlobalSettings::pitch, pitch);
}

vx_status vx_settings_get_volume(const vx_settings* settings, float* volume) {
    return get(settings, &GlobalSettings::volume, volume);
}

vx_status vx_settings_get_speech_volume(const vx_settings* settings, unsigned int* percent) {
    return get(settings, &GlobalSettings::speechVolume, percent);
}

vx_status vx_settings_get_media_volume(const vx_settings* settings, unsigned int* percent) {
    return get(settings, &GlobalSettings::mediaVolume, percent);
}

vx_status vx_settings_get_verbosity(const vx_settings* settings, int* verbosity) {
    return get(settings, &GlobalSettings::verbosity, verbosity);
}

vx_status vx_get_settings(vx_client* client, int deadline_ms, vx_settings** settings) {
    Deadline deadline;
    if (!areGiven(client, settings) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        return finish(client->client.settings(deadline), [settings](GlobalSettings&& found) {
            *settings = new vx_settings{std::move(found)};
        });
    });
}

vx_status vx_change_settings(vx_client* client, const vx_settings* settings, int deadline_ms) {
    Deadline deadline;
    if (!areGiven(client, settings) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.change(*settings, deadline)); });
}

vx_status vx_reset_settings(vx_client* client, int deadline_ms) {
    Deadline deadline;
    if (!areGiven(client) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.resetSettings(deadline)); });
}

vx_status vx_is_on(vx_client* client, int which, int deadline_ms, int* on) {
    Deadline deadline;
    Switch found;
    if (!areGiven(client, on) || !readSwitch(which, found) ||
        !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        return finish(client->client.isOn(found, deadline),
                      [on](bool isOn) { *on = isOn ? 1 : 0; });
    });
}

vx_status vx_turn(vx_client* client, int which, int on, int deadline_ms) {
    Deadline deadline;
    Switch found;
    if (!areGiven(client) || !readSwitch(which, found) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.turn(found, on != 0, deadline)); });
}
