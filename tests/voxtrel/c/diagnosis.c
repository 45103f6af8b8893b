/* SPDX-License-Identifier: Apache-2.0 */
#include <string.h>

#include "tests/voxtrel/c/program.h"

#define LIMIT 60000

const char* missing_manager_is_diagnosed(vx_client* client, const char* socket, int error) {
    vx_diagnosis* seen = NULL;
    vx_peer peer;
    vx_status why = VX_OK;
    const char* text = NULL;
    int number = -1;

    REQUIRE(vx_diagnose(client, LIMIT, &seen) == VX_OK);
    REQUIRE(vx_diagnosis_reach(seen, &number) == VX_OK && number == VX_REACH_NO_MANAGER);
    REQUIRE(vx_diagnosis_why_not(seen, &why, &text) == VX_OK && why == VX_SERVICE_NOT_FOUND);
    REQUIRE(strstr(text, socket) != NULL && strchr(text, '\n') == NULL);
    REQUIRE(vx_diagnosis_transport(seen, &text) == VX_OK && strcmp(text, "socket") == 0);
    REQUIRE(vx_diagnosis_path(seen, &text) == VX_OK && strcmp(text, socket) == 0);
    REQUIRE(vx_diagnosis_error(seen, &number) == VX_OK && number == error);
    memset(&peer, 77, sizeof peer);
    REQUIRE(vx_diagnosis_service(seen, &peer) == VX_OK && peer.process == 0);
    REQUIRE(peer.user_known == 0 && peer.user == 0 && peer.stopped == 0);
    REQUIRE(peer.reserved[0] == NULL && peer.reserved[3] == NULL);
    return vx_diagnosis_free(seen) == VX_OK ? NULL : "the diagnosis is not freed";
}

const char* connection_is_diagnosed(void) {
    vx_fake* fake = NULL;
    vx_client* client;
    vx_diagnosis* seen = NULL;
    vx_status why = VX_FAILED;
    const char* text = NULL;
    int number = -1;

    REQUIRE(vx_fake_new(&fake) == VX_OK);
    client = client_of(fake, VX_THREAD_OF_LIBRARY);
    REQUIRE(vx_wait_until_connected(client, LIMIT) == VX_OK);
    REQUIRE(vx_diagnose(client, VX_CLIENT_DEADLINE, &seen) == VX_OK);
    REQUIRE(vx_client_free(client) == VX_OK);
    REQUIRE(vx_fake_free(fake) == VX_OK);
    REQUIRE(vx_diagnosis_reach(seen, &number) == VX_OK && number == VX_REACH_CONNECTED);
    REQUIRE(vx_diagnosis_why_not(seen, &why, &text) == VX_OK && why == VX_OK);
    REQUIRE(text[0] == '\0');
    return vx_diagnosis_free(seen) == VX_OK ? NULL : "the diagnosis is not freed";
}
