// SPDX-License-Identifier: Apache-2.0
#include <binder/ProcessState.h>

#include "bench/voxtrel/Peer.h"
#include "client/TTSClientPrivate.h"
#include "vocabulary/Events.h"

namespace {

class Bare : public bench::Speaker {
public:
    void say() override { (void)client->say(++mNumber, "Hello, world."); }

    TTS::TTSClientPrivate* client = nullptr;

private:
    unsigned mNumber = 0;
};

Bare gBare;

void onEvent(unsigned event, unsigned /*second*/, unsigned /*third*/) {
    if (event == TTS::EVENT_STARTED) {
        gBare.noteStart();
    } else if (event == TTS::EVENT_FINISHED || event == TTS::EVENT_STOPPED) {
        gBare.noteEnd();
    }
}

}  // namespace

int main() {
    android::ProcessState::self()->startThreadPool();
    TTS::TTSClientPrivate client("class_peer", onEvent);
    if (client.connect() != 0) {
        return 1;
    }
    gBare.client = &client;
    return bench::serveBenchmark(gBare);
}
