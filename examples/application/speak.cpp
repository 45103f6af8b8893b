// SPDX-License-Identifier: Apache-2.0
// Speaks one sentence and leaves when it has been spoken.
#include <voxtrel/Client.h>

#include <cstdio>

int main(int argc, char** argv) {
    voxtrel::Client client("speak");
    const voxtrel::Utterance said = client.say(argc > 1 ? argv[1] : "Hello, world.");
    const voxtrel::Outcome outcome = said.wait(std::chrono::seconds(60));
    std::puts(outcome.message());
    return outcome ? 0 : 1;
}
