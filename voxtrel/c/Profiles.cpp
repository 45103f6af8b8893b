// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "voxtrel/c/Handles.h"

using namespace voxtrel::c;
using voxtrel::Profile;
using voxtrel::Switch;

vx_status vx_save_profile(vx_client* client, const char* path) {
    if (!areGiven(client, path)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.saveProfile(path)); });
}

vx_status vx_load_profile(vx_client* client, const char* path) {
    if (!areGiven(client, path)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(client->client.loadProfile(path)); });
}

vx_status vx_profile_new(vx_profile** profile) {
    return create(profile);
}

vx_status vx_profile_free(vx_profile* profile) {
    return destroy(profile);
}

vx_status vx_profile_path_of(const char* name, char* path, size_t size) {
    if (!areGiven(name, path)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        const std::string found = Profile::pathOf(name);
        if (found.size() >= size) {
            return badParameter("the path and its zero byte do not fit where they are to go");
        }
        std::memcpy(path, found.c_str(), found.size() + 1);
        return static_cast<vx_status>(VX_OK);
    });
}

vx_status vx_profile_read(const char* path, vx_profile** profile) {
    if (!areGiven(path, profile)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        return finish(Profile::read(path),
                      [profile](Profile&& found) { *profile = new vx_profile{std::move(found)}; });
    });
}

vx_status vx_profile_write(const vx_profile* profile, const char* path) {
    if (!areGiven(profile, path)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return finish(profile->profile.write(path)); });
}

vx_status vx_profile_get_settings(const vx_profile* profile, vx_settings** settings) {
    if (!areGiven(profile, settings)) {
        return VX_BAD_PARAMETER;
    }
    return create(settings, profile->profile.settings);
}

vx_status vx_profile_set_settings(vx_profile* profile, const vx_settings* settings) {
    if (!areGiven(profile, settings)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        voxtrel::GlobalSettings copy = *settings;  // whole, or not at all where memory runs out
        profile->profile.settings = std::move(copy);
        return VX_OK;
    });
}

vx_status vx_profile_is_on(const vx_profile* profile, int which, int* on) {
    Switch found;
    if (!areGiven(profile, on) || !readSwitch(which, found)) {
        return VX_BAD_PARAMETER;
    }
    *on = profile->profile.switchedOff.count(found) == 0 ? 1 : 0;
    return VX_OK;
}

vx_status vx_profile_turn(vx_profile* profile, int which, int on) {
    Switch found;
    if (!areGiven(profile) || !readSwitch(which, found)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        if (on != 0) {
            profile->profile.switchedOff.erase(found);
        } else {
            profile->profile.switchedOff.insert(found);
        }
        return VX_OK;
    });
}

vx_status vx_profile_get_output(const vx_profile* profile, vx_profile_output* output) {
    if (!areGiven(profile, output)) {
        return VX_BAD_PARAMETER;
    }
    const Profile& found = profile->profile;
    *output = {found.sampleRate,        found.channels,           found.mixerPath,
               found.longBreakDuration, found.shortBreakDuration, {}};
    return VX_OK;
}
