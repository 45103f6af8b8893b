// SPDX-License-Identifier: Apache-2.0
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <ttscommon/ttscommon.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "service/EspeakEngine.h"
#include "service/Mixer.h"
#include "service/Options.h"
#include "service/ProfileStore.h"
#include "service/Sink.h"
#include "service/Speaker.h"
#include "service/SpeechQueue.h"
#include "service/VoxtrelService.h"

namespace voxtreld {
namespace {

int fail(const std::string& message) {
    std::fprintf(stderr, "voxtreld: %s\n", message.c_str());
    return EXIT_FAILURE;
}

void logLine(const std::string& line) {
    dbgPrint(0, "[voxtreld] %s\n", line.c_str());
}

Caller binderCaller() {
    const android::IPCThreadState* state = android::IPCThreadState::self();
    return {static_cast<uint32_t>(state->getCallingPid()),
            static_cast<uint32_t>(state->getCallingUid())};
}

/// Blocks the signals in this thread and all that it starts, so that `waitForEnd` gets them.
sigset_t blockSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    return signals;
}

/// Makes the parts and runs them until a signal ends the process.
int run(const Options& options) {
    const sigset_t signals = blockSignals();
    std::string error;
    std::unique_ptr<Sink> sink = makeSink(options.sink, options.realTime, error);
    if (sink == nullptr) {
        return fail(error);
    }

    const auto queue = std::make_shared<SpeechQueue>(options.limits);
    const auto profile = std::make_shared<ProfileStore>(options.profile, logLine);
    const android::sp<VoxtrelService> service =
        new VoxtrelService({queue, profile, options.admission, binderCaller, logLine});
    EspeakEngine engine;

    // The sound path is opened on its own thread, beside the first clients' search for the service.
    bool failed = false;
    std::thread speech([&] {
        auto background = std::make_unique<Background>();
        const bool ready = engine.load(error) && sink->open(engine.sampleRate(), error) &&
                           (options.background.empty() ||
                            background->open(options.background, engine.sampleRate(), error));
        if (!ready) {
            failed = true;
            kill(getpid(), SIGTERM);
            return;
        }
        Mixer mixer(options.background.empty() ? nullptr : std::move(background));
        service->announceVoices(engine.voices());
        Speaker(engine, *sink, mixer, *queue, service->listener()).run();
    });

    android::ProcessState::self()->startThreadPool();
    const android::status_t added = android::defaultServiceManager()->addService(
        TTS::ITextToSpeechFestival::descriptor, service);
    if (added == android::OK) {
        int signal = 0;
        sigwait(&signals, &signal);
    }
    queue->close();
    speech.join();
    service->flushEvents(std::chrono::seconds(1));
    profile->flush();
    if (added != android::OK) {
        return fail("the service manager does not answer or refused the name: is it running?");
    }
    return failed ? fail(error) : EXIT_SUCCESS;
}

}  // namespace
}  // namespace voxtreld

int main(int argc, char** argv) {
    voxtreld::Options options;
    int exitStatus = EXIT_SUCCESS;
    if (!voxtreld::parseOptions(argc, argv, options, exitStatus)) {
        return exitStatus;
    }
    return voxtreld::run(options);
}
