// SPDX-License-Identifier: Apache-2.0
// Speaks one sentence and leaves when it has been spoken.
#include <binder/ProcessState.h>

#include <cstdio>
#include <cstdlib>
#include <future>
#include <mutex>
#include <string>

#include "client/TTSClientPrivate.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace {

std::promise<std::string> outcome;
std::once_flag isKnown;

// What comes first counts: a service can die after it has spoken.
void end(const char* how) {
    std::call_once(isKnown, [how] { outcome.set_value(how); });
}

// Called on a thread of the binder runtime, with what became of an utterance and its number.
void onEvent(unsigned event, unsigned utterance, unsigned /*detail*/) {
    if (event == TTS::EVENT_FINISHED && utterance == 1) {
        end("spoken");
    } else if (event == TTS::EVENT_STOPPED && utterance == 1) {
        end("stopped");
    }
}

// A service that has died sends no event: without this the program would wait for ever.
class ServiceDeath : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>& /*who*/) override {
        end("the service has died");
    }
};

int sayUnlessDead(TTS::TTSClientPrivate& client, const android::sp<ServiceDeath>& death,
                  const std::string& text) {
    const android::sp<android::IBinder> service =
        android::IInterface::asBinder(client.getService());
    if (service == nullptr || service->linkToDeath(death, nullptr, 0) != android::OK) {
        return TTS::STATUS_NO_SERVICE;
    }
    return client.say(1, text);
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
    const android::sp<ServiceDeath> death = new ServiceDeath;
    int status = client.connect();
    if (status == 0) {
        status = sayUnlessDead(client, death, argc > 1 ? argv[1] : "Hello, world.");
    }
    if (status != 0) {
        std::fprintf(stderr, "hello: the service refuses with %d\n", status);
        return 1;
    }
    const std::string how = outcome.get_future().get();
    client.disconnect();
    std::puts(how.c_str());
    return how == "spoken" ? 0 : 1;
}
