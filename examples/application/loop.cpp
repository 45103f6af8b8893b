// SPDX-License-Identifier: Apache-2.0
// Speaks its arguments, and tells what becomes of them, in one loop on one thread.
#include <poll.h>
#include <voxtrel/Client.h>

#include <cstdio>

int main(int argc, char** argv) {
    voxtrel::ClientOptions options;
    options.handlerThread = voxtrel::HandlerThread::OfTheApplication;
    voxtrel::Client client("loop", options);
    int left = argc - 1;
    client.onEvent([&](const voxtrel::Event& event) {
        if (event.kind == voxtrel::Event::Kind::Ended && left-- > 0)
            std::printf("%s: %s\n", argv[event.utterance.number()], event.outcome.message());
    });
    for (int i = 1; i < argc; ++i)
        client.say(argv[i]);
    pollfd polled = {client.fd(), POLLIN, 0};
    while (left > 0 && poll(&polled, 1, -1) > 0)
        client.dispatch();
}
