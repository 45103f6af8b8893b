// SPDX-License-Identifier: Apache-2.0
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <mutex>
#include <string>

#include "tests/support/Eventually.h"
#include "tests/support/RecordingService.h"
#include "tests/support/Roles.h"
#include "tests/support/ScriptedService.h"

namespace {

using android::sp;

/// Answers each utterance with the event (1, id, length of the text).
class EchoService : public support::RecordingService {
public:
    EchoService() {
        isEnabled = true;
        capabilities = support::usualCapabilities();
    }

    int registerCallback(unsigned /*pid*/, const sp<TTS::ICallback>& cb) override {
        const std::lock_guard<std::mutex> guard(mMutex);
        mCallback = cb;
        return 0;
    }

    int deregisterCallback(unsigned /*pid*/) override {
        const std::lock_guard<std::mutex> guard(mMutex);
        mCallback.clear();
        return 5;
    }

    int say(unsigned /*pid*/, unsigned id, const std::string& words, unsigned /*speed*/,
            float /*volume*/, unsigned /*voice*/, unsigned /*bgVolume*/, unsigned /*ttsVolume*/,
            float /*pitch*/, EN_VOXTREL_LANGUAGE /*language*/) override {
        const sp<TTS::ICallback> client = registered();
        if (client != nullptr) {
            client->notify(1, id, static_cast<unsigned>(words.size()));
        }
        return 0;
    }

    sp<TTS::ICallback> registered() {
        const std::lock_guard<std::mutex> guard(mMutex);
        return mCallback;
    }

private:
    std::mutex mMutex;
    sp<TTS::ICallback> mCallback;
};

/// Serves until its input ends; tells "ready" once it can be found, and to each line whether a
/// callback is registered.
int serve(const voxtrel_test::Arguments& /*arguments*/) {
    const sp<EchoService> service = new EchoService;
    const auto isAdded = [&] {
        return android::defaultServiceManager()->addService(TTS::ITextToSpeechFestival::descriptor,
                                                            service) == android::NO_ERROR;
    };
    if (!voxtrel_test::eventually(isAdded)) {  // a service may start before the service manager
        return 1;
    }
    android::ProcessState::self()->startThreadPool();
    voxtrel_test::tell("ready");
    while (!voxtrel_test::hear().empty()) {
        voxtrel_test::tell(service->registered() != nullptr ? "registered" : "nobody");
    }
    return 0;
}

const voxtrel_test::Role kServe("service", serve);

}  // namespace
