// SPDX-License-Identifier: Apache-2.0
// Speaks one sentence, from its beginning again if the service dies meanwhile.
#include <voxtrel/Client.h>

#include <cstdio>

int main(int argc, char** argv) {
    voxtrel::Client client("survive");
    client.onEvent([](const voxtrel::Event& event) {
        if (event.kind == voxtrel::Event::Kind::Disconnected)
            std::puts("the service is gone: it is said again");
    });
    voxtrel::SpeechOptions options;
    options.onLoss = voxtrel::OnLoss::SayAgainWhatever;
    const auto said = client.say(argc > 1 ? argv[1] : "Hello, world.", options);
    const voxtrel::Outcome outcome = said.wait();  // for as long as it takes
    std::puts(outcome.message());
    return outcome ? 0 : 1;
}
