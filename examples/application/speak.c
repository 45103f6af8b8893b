/* SPDX-License-Identifier: Apache-2.0 */
/* Speaks one sentence and leaves when it has been spoken. */
#include <stdio.h>
#include <voxtrel/voxtrel.h>

int main(int argc, char** argv) {
    vx_client* client = NULL;
    vx_utterance* said = NULL;
    vx_outcome outcome = {VX_OUTCOME_PENDING};
    const char* why = NULL;
    vx_client_new("speak", NULL, &client);
    vx_say(client, argc > 1 ? argv[1] : "Hello, world.", NULL, &said);
    if (vx_utterance_wait(said, 60000, &outcome) != VX_OK) {
        vx_last_error(&why); /* a null client or utterance is an error as well */
    }
    puts(why != NULL ? why : outcome.message);
    vx_utterance_free(said);
    vx_client_free(client);
    return outcome.kind == VX_OUTCOME_FINISHED ? 0 : 1;
}
