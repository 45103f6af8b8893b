/* SPDX-License-Identifier: Apache-2.0 */
/* Speaks its arguments, and tells what becomes of them, in one loop on one thread. */
#include <poll.h>
#include <stdio.h>
#include <voxtrel/voxtrel.h>
int main(int argc, char** argv) {
    vx_client_options* options = NULL;
    vx_client* client = NULL;
    vx_event event;
    struct pollfd polled = {-1, POLLIN, 0};
    int i, left = argc - 1;
    vx_client_options_new(&options);
    vx_client_options_set_handler_thread(options, VX_THREAD_OF_APPLICATION);
    vx_client_new("loop", options, &client);
    for (i = 1; i < argc; ++i)
        vx_say(client, argv[i], NULL, NULL);
    while (left > 0 && vx_client_fd(client, &polled.fd) == VX_OK && poll(&polled, 1, -1) > 0)
        while (vx_next_event(client, &event) == VX_OK)
            if (event.kind == VX_EVENT_ENDED && left-- > 0)
                printf("%s: %s\n", argv[event.utterance], event.outcome.message);
    return vx_client_options_free(options) || vx_client_free(client);
}
