// SPDX-License-Identifier: Apache-2.0
#include "bench/service/MeasuredService.h"

#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <memory>
#include <new>

#include "bench/service/Figures.h"
#include "service/EspeakEngine.h"
#include "service/Mixer.h"
#include "service/NullSink.h"
#include "service/PacedSink.h"
#include "service/ProfileStore.h"
#include "service/Speaker.h"
#include "service/VoxtrelService.h"

namespace voxtreld {
namespace {

class ClockSink : public NullSink {
public:
    explicit ClockSink(SoundClock* clock) : mClock(clock) {}

    bool begin(uint32_t /*pid*/, uint32_t /*id*/) override {
        mFirst = true;
        return true;
    }
    bool write(const int16_t* /*samples*/, size_t /*count*/, const Cancel& /*cancel*/) override {
        if (mFirst) {
            mFirst = false;
            mClock->firstSampleNs = nowNs();
        }
        return true;
    }

private:
    SoundClock* mClock;
    bool mFirst = true;
};

Caller binderCaller() {
    const android::IPCThreadState* state = android::IPCThreadState::self();
    return {static_cast<uint32_t>(state->getCallingPid()),
            static_cast<uint32_t>(state->getCallingUid())};
}

[[noreturn]] void serve(SoundClock* clock, const std::string& profilePath) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const auto queue = std::make_shared<SpeechQueue>(QueueLimits{});
    const auto profile = std::make_shared<ProfileStore>(profilePath);
    const android::sp<VoxtrelService> service =
        new VoxtrelService({queue, profile, std::make_shared<const Policy>(geteuid()), binderCaller,
                            [](LogLevel /*level*/, const std::string& line) {
                                std::fprintf(stderr, "%s\n", line.c_str());
                            }});
    EspeakEngine engine;
    PacedSink sink(std::make_unique<ClockSink>(clock));
    std::string error;
    if (!engine.load(error) || !sink.open(engine.sampleRate(), error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        _exit(1);
    }
    android::ProcessState::self()->startThreadPool();
    android::defaultServiceManager()->addService(TTS::ITextToSpeechFestival::descriptor, service);
    service->announceVoices(engine.voices());
    Mixer mixer(nullptr);
    Speaker(engine, sink, mixer, *queue, service->listener()).run();
    _exit(0);
}

}  // namespace

SoundClock* makeSoundClock() {
    void* memory = mmap(nullptr, sizeof(SoundClock), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : new (memory) SoundClock{};
}

pid_t forkService(SoundClock* clock, const std::string& profile) {
    const pid_t child = fork();
    if (child == 0) {
        serve(clock, profile);
    }
    return child;
}

}  // namespace voxtreld
