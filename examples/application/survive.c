/* SPDX-License-Identifier: Apache-2.0 */
/* Speaks one sentence, from its beginning again if the service dies meanwhile. */
#include <stdio.h>
#include <voxtrel/voxtrel.h>
static void tell(const vx_event* event, void* user) {
    if (event->kind == VX_EVENT_DISCONNECTED)
        puts((const char*)user);
}
int main(int argc, char** argv) {
    vx_client* client = NULL;
    vx_options* options = NULL;
    vx_utterance* said = NULL;
    vx_outcome outcome = {VX_OUTCOME_PENDING};
    vx_client_new("survive", NULL, &client);
    vx_on_event(client, tell, "the service is gone: it is said again");
    vx_options_new(&options);
    vx_options_set_on_loss(options, VX_SAY_AGAIN_WHATEVER);
    vx_say(client, argc > 1 ? argv[1] : "Hello, world.", options, &said);
    puts(vx_utterance_wait(said, VX_FOREVER, &outcome) == VX_OK ? outcome.message : "failed");
    return vx_options_free(options) || vx_utterance_free(said) || vx_client_free(client) ||
           outcome.kind != VX_OUTCOME_FINISHED;
}
