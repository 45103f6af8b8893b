// SPDX-License-Identifier: Apache-2.0
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "service/EspeakEngine.h"
#include "service/Lifetime.h"
#include "service/Log.h"
#include "service/ManagerPlace.h"
#include "service/Mixer.h"
#include "service/Options.h"
#include "service/Policy.h"
#include "service/PolicyFile.h"
#include "service/Preconditions.h"
#include "service/ProfileLock.h"
#include "service/ProfileStore.h"
#include "service/Readiness.h"
#include "service/Registration.h"
#include "service/SinkFactory.h"
#include "service/Speaker.h"
#include "service/SpeechQueue.h"
#include "service/UncaughtException.h"
#include "service/UserProfile.h"
#include "service/VoxtrelService.h"

namespace voxtreld {
namespace {

int fail(const std::string& message) {
    logLine(LogLevel::Error, message);
    return EXIT_FAILURE;
}

Caller binderCaller() {
    const android::IPCThreadState* state = android::IPCThreadState::self();
    return {static_cast<uint32_t>(state->getCallingPid()),
            static_cast<uint32_t>(state->getCallingUid())};
}

/// Lets clients find the service, and starts the runtime's threads for them.
bool publish(const android::sp<VoxtrelService>& service, Registration& registration,
             const sigset_t& signals, std::string& error) {
    if (!isManagerPlaceUsable(signals, error)) {
        return false;
    }
    android::ProcessState::self()->startThreadPool();
    return registration.begin(service, signals, error);
}

/// Creates the parts and runs them until a signal comes or the service has been idle for long.
int serve(const Options& options, const std::shared_ptr<const Policy>& policy,
          const sigset_t& signals, Registration& registration) {
    std::string error;
    std::unique_ptr<Sink> sink = makeSink(options.sink, options.realTime, error);
    if (sink == nullptr) {
        return fail(error);
    }

    const auto queue = std::make_shared<SpeechQueue>(options.limits);
    const auto profile = std::make_shared<ProfileStore>(options.profile, logLine);
    const android::sp<VoxtrelService> service =
        new VoxtrelService({queue, profile, policy, binderCaller, logLine, options.maxClients});
    EspeakEngine engine;
    Readiness readiness;

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
        readiness.voicesLoaded();
        Speaker(engine, *sink, mixer, *queue, service->listener()).run();
    });

    std::string reason = "stopped";
    std::string lost;
    if (publish(service, registration, signals, lost)) {
        readiness.registered();
        reason = waitForEnd(signals, *service, options.idleLimit);
        lost = registration.loss();
    }
    queue->close();
    speech.join();
    service->flushEvents(std::chrono::seconds(1));
    profile->flush();
    if (!lost.empty()) {
        return fail(lost);
    }
    if (failed) {
        return fail(error);
    }
    logLine(LogLevel::Info,
            registration.managerHasDied() ? "the service manager has died" : reason);
    return EXIT_SUCCESS;
}

int run(const Options& options, Registration& registration) {
    constexpr std::chrono::seconds kTimeout(5);
    const sigset_t signals = blockSignals();
    std::string error;
    if (!isUsableProfile(options.profile, error) || !haveDescriptors(error)) {
        return fail(error);
    }
    auto rules = loadPolicy(options.policy, error);
    if (!rules.has_value()) {
        return fail(error);
    }
    const auto policy = std::make_shared<const Policy>(geteuid(), std::move(*rules));
    switch (lockProfile(options.profile, signals, kTimeout, logLine)) {
        case ProfileLock::OfAnother:
            return fail("another voxtreld uses the profile '" + options.profile +
                        "': end that one, or name another file with --profile");
        case ProfileLock::Interrupted:
            logLine(LogLevel::Info, "stopped while another voxtreld used the profile");
            return EXIT_SUCCESS;
        case ProfileLock::Ours:
            break;
    }
    return serve(options, policy, signals, registration);
}

}  // namespace
}  // namespace voxtreld

int main(int argc, char** argv) {
    std::set_terminate(voxtreld::endAtOnce);
    voxtreld::Options options;
    int exitStatus = EXIT_SUCCESS;
    if (!voxtreld::parseOptions(argc, argv, options, exitStatus)) {
        return exitStatus;
    }
    voxtreld::chooseLogLevel(options.logLevel);
    if (options.userProfile) {
        std::string error;
        options.profile = voxtreld::userProfile(error);
        if (options.profile.empty()) {
            return voxtreld::fail(error);
        }
    }
    voxtreld::Registration registration(options.idleLimit.count() == 0
                                            ? voxtreld::Registration::AfterDeath::RegisterAgain
                                            : voxtreld::Registration::AfterDeath::End,
                                        voxtreld::logLine);
    exitStatus = voxtreld::run(options, registration);
    if (!registration.stop()) {
        std::_Exit(exitStatus);  // a thread uses what would be destroyed
    }
    return exitStatus;
}
