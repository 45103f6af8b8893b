// SPDX-License-Identifier: Apache-2.0
// A service that answers 0 to everything and sends no event. Words say what it fills in all the
// same: "ready", and "enabled", which is speech.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <cstdio>
#include <string>

#include "tests/support/RecordingService.h"

int main(int argc, char** argv) {
    const android::sp<support::RecordingService> service = new support::RecordingService;
    for (int n = 1; n < argc; ++n) {
        const std::string word = argv[n];
        service->isEnabled = service->isEnabled || word == "enabled";
        if (word == "ready") {
            service->capabilities.ready = service->capabilities.permitted = true;
            service->capabilities.languages.assign(5, false);
            service->capabilities.voicesNum.assign(5, 0);
        }
    }
    android::ProcessState::self()->startThreadPool();
    if (android::defaultServiceManager()->addService(TTS::ITextToSpeechFestival::descriptor,
                                                     service) != android::OK) {
        return 1;
    }
    std::puts("service: clients find it now");
    std::fflush(stdout);
    android::IPCThreadState::self()->joinThreadPool();
}
