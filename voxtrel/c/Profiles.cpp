// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"

using namespace voxtrel::c;

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
