// SPDX-License-Identifier: Apache-2.0
// Speaks one sentence and leaves when it has been spoken.
#include <binder/ProcessState.h>

#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>

#include "client/TTSClientPrivate.h"
#include "vocabulary/Events.h"

namespace {

std::promise<unsigned> ended;

// Called on a thread of the binder runtime, with what became of an utterance and its number.
void onEvent(unsigned event, unsigned utterance, unsigned /*detail*/) {
    const bool isOver = event == TTS::EVENT_FINISHED || event == TTS::EVENT_STOPPED;
    if (isOver && utterance == 1) {
        ended.set_value(event);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::string(argv[1]) == "--spawn") {
        // A service of the user's own, where none is running.
        if (std::system("voxtrelctl --spawn status >/dev/null") != 0) {
            return 1;  // it has said why
        }
        ++argv;
        --argc;
    }
    android::ProcessState::self()->startThreadPool();  // or no event ever arrives
    TTS::TTSClientPrivate client("hello", &onEvent);
    int status = client.connect();
    if (status == 0) {
        status = client.say(1, argc > 1 ? argv[1] : "Hello, world.");
    }
    if (status != 0) {
        std::fprintf(stderr, "hello: the service refuses with %d\n", status);
        return 1;
    }
    const bool finished = ended.get_future().get() == TTS::EVENT_FINISHED;
    client.disconnect();
    std::puts(finished ? "spoken" : "stopped");
    return finished ? 0 : 1;
}
