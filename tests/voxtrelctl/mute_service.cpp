// SPDX-License-Identifier: Apache-2.0
// A service that answers 0 to everything and sends no event. Words say what it fills in all the
// same: "ready", and "enabled", which is speech. "slow" answers each request after 300 ms, "dies"
// ends when it is asked what it can do; a number is the code of a transaction that it does not
// know.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include <unistd.h>

#include "tests/support/RecordingService.h"

namespace {

// One call at a time: what it records is for one thread.
class MuteService : public support::RecordingService {
public:
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override {
        const std::lock_guard<std::mutex> held(mMutex);
        if (isSlow) {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }
        return unknown.count(code) != 0
                   ? android::UNKNOWN_TRANSACTION
                   : support::RecordingService::onTransact(code, data, reply, flags);
    }

    int getCapabilities(TTS::Capabilities& out) override {
        if (isDying) {
            _exit(1);
        }
        return support::RecordingService::getCapabilities(out);
    }

    bool isSlow = false;
    bool isDying = false;
    std::set<uint32_t> unknown;

private:
    std::mutex mMutex;
};

}  // namespace

int main(int argc, char** argv) {
    const android::sp<MuteService> service = new MuteService;
    for (int n = 1; n < argc; ++n) {
        const std::string word = argv[n];
        service->isEnabled = service->isEnabled || word == "enabled";
        service->isSlow = service->isSlow || word == "slow";
        service->isDying = service->isDying || word == "dies";
        if (const unsigned long code = std::strtoul(argv[n], nullptr, 10); code != 0) {
            service->unknown.insert(static_cast<uint32_t>(code));
        }
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
