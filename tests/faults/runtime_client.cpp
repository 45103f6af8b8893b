// SPDX-License-Identifier: Apache-2.0
// usage: faults_runtime_client TIMES. A client of the runtime alone, with none of the library's
// threads: finds the service, registers a callback, asks it, has a pause played, leaves. Lines and
// exit status as of faults_cpp_client.
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>

#include "ipc/BnCallback.h"
#include "ipc/ITextToSpeechFestival.h"
#include "vocabulary/Capabilities.h"
#include "vocabulary/Events.h"

namespace {

using TTS::ITextToSpeechFestival;

class Callback : public TTS::BnCallback {
public:
    bool notify(unsigned event, unsigned second, unsigned) override {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (event == TTS::EVENT_FINISHED || event == TTS::EVENT_STOPPED) {
            mEnds += second == kNumber ? 1 : 0;
            mEnded.notify_all();
        }
        return true;
    }
    int ends(std::chrono::seconds limit) {
        std::unique_lock<std::mutex> lock(mMutex);
        mEnded.wait_for(lock, limit, [this] { return mEnds != 0; });
        return mEnds;
    }
    static constexpr unsigned kNumber = 7;

private:
    std::mutex mMutex;
    std::condition_variable mEnded;
    int mEnds = 0;
};

class Watch : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>&) override {}
};

android::sp<ITextToSpeechFestival> find() {
    const android::sp<android::IServiceManager> manager = android::defaultServiceManager();
    if (manager == nullptr) {
        return nullptr;
    }
    const android::sp<android::IBinder> binder =
        manager->checkService(ITextToSpeechFestival::descriptor);
    return ITextToSpeechFestival::asInterface(binder);
}

void live(const android::sp<ITextToSpeechFestival>& service,
          const android::sp<Callback>& callback) {
    const auto pid = static_cast<uint32_t>(getpid());
    const android::sp<android::IBinder> binder = android::IInterface::asBinder(service);
    const android::sp<Watch> watch = new Watch;
    (void)binder->linkToDeath(watch, nullptr, 0);
    (void)service->registerCallback(pid, callback);
    TTS::Capabilities all;
    (void)service->getCapabilities(all);
    (void)service->silence(pid, Callback::kNumber, 1, 65535);
    const int ends = callback->ends(std::chrono::seconds(5));
    (void)service->deregisterCallback(pid);
    (void)binder->unlinkToDeath(watch);
    if (ends > 1) {
        std::puts("broken: two ends");
        std::exit(2);
    }
    const bool isGood = ends == 1 && all.ready;
    std::puts(isGood ? "done 0" : "failed: not served");
}

void attempt() {
    try {
        android::ProcessState::self()->startThreadPool();
        const android::sp<ITextToSpeechFestival> service = find();
        const android::sp<Callback> callback = new Callback;
        if (service == nullptr) {
            std::puts("failed: not found");
            return;
        }
        live(service, callback);
    } catch (const std::bad_alloc&) {
        std::puts("failed: no memory");
    }
}

}  // namespace

int main(int argc, char** argv) {
    static char buffer[4096];  // lest the first line takes memory
    std::setvbuf(stdout, buffer, _IOLBF, sizeof buffer);
    const int times = argc > 1 ? std::atoi(argv[1]) : 1;
    for (int i = 0; i < times; ++i) {
        attempt();
    }
    return 0;
}
