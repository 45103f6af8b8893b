// SPDX-License-Identifier: Apache-2.0
// The service with an engine that takes no time and a sink that plays nothing, so that what is
// measured is neither of them.
// usage: scale_service BOARD PROFILE
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "bench/scale/Board.h"
#include "service/Mixer.h"
#include "service/NullSink.h"
#include "service/Preconditions.h"
#include "service/ProfileStore.h"
#include "service/Speaker.h"
#include "service/VoxtrelService.h"

namespace voxtreld {
namespace {

constexpr size_t kMaxClients = 1100;
constexpr size_t kMaxUtterances = 20'000;

/// Gives one block of samples for each text, and waits before it while the board says so.
class InstantEngine : public Engine {
public:
    explicit InstantEngine(const bench::Board& board) : mBoard(board) {}

    bool load(std::string& /*error*/) override { return true; }
    unsigned sampleRate() const override { return 16000; }
    std::vector<EngineVoice> voices() const override { return {{LANG_EN_US, "instant"}}; }
    bool speak(const std::string& /*text*/, const Prosody& /*prosody*/,
               SpeechReceiver& receiver) override {
        constexpr int16_t kSamples[64] = {};
        bool goesOn = true;
        while (goesOn && mBoard.hold != 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
            goesOn = receiver.samples(kSamples, 1);
        }
        (void)(goesOn && receiver.samples(kSamples, 64));
        return true;
    }

private:
    const bench::Board& mBoard;
};

Caller binderCaller() {
    const android::IPCThreadState* state = android::IPCThreadState::self();
    return {static_cast<uint32_t>(state->getCallingPid()),
            static_cast<uint32_t>(state->getCallingUid())};
}

int serve(const bench::Board& board, const std::string& profilePath) {
    std::string error;
    if (!haveDescriptors(error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    QueueLimits limits;
    limits.utterancesPerClient = kMaxUtterances;
    const auto queue = std::make_shared<SpeechQueue>(limits);
    const auto log = [](LogLevel level, const std::string& line) {
        if (level == LogLevel::Warning || level == LogLevel::Error) {
            std::fprintf(stderr, "%s\n", line.c_str());
        }
    };
    const android::sp<VoxtrelService> service = new VoxtrelService(
        {queue, std::make_shared<ProfileStore>(profilePath),
         std::make_shared<const Policy>(geteuid()), binderCaller, log, kMaxClients});
    InstantEngine engine(board);
    NullSink sink;
    Mixer mixer(nullptr);
    service->announceVoices(engine.voices());
    android::ProcessState::self()->startThreadPool();
    android::defaultServiceManager()->addService(TTS::ITextToSpeechFestival::descriptor, service);
    std::puts("ready");
    std::fflush(stdout);
    Speaker(engine, sink, mixer, *queue, service->listener()).run();
    return 0;
}

}  // namespace
}  // namespace voxtreld

int main(int argc, char** argv) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    return argc == 3 ? voxtreld::serve(bench::boardAt(std::atoi(argv[1])), argv[2]) : 2;
}
