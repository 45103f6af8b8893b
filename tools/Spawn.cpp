// SPDX-License-Identifier: Apache-2.0
#include "tools/Spawn.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <future>
#include <iostream>
#include <system_error>
#include <thread>

#include "binder/ServiceManagerSocket.h"
#include "tools/Daemon.h"
#include "tools/Errors.h"
#include "tools/EventQueue.h"
#include "tools/Platform.h"

namespace voxtrelctl {
namespace {

using Clock = EventQueue::Clock;

constexpr auto kLook = std::chrono::milliseconds(10);
constexpr auto kNoticeable = std::chrono::milliseconds(800);
/// Voices come from a disk that may be slow; the client library waits as long for them.
constexpr auto kPatience = std::chrono::seconds(60);
constexpr auto kAnswerPatience = std::chrono::seconds(5);
/// Who has started the service manager, such as a unit of systemd's, may start the service next.
constexpr auto kRegistrationPatience = std::chrono::seconds(5);
constexpr const char* kIdleSeconds = "300";

enum class Answer { No, NotReady, Ready, Hangs };

/// Looks again and again until `isDone`, and says whether it was in time. Ctrl-C ends the process.
bool await(Terminal& terminal, const std::string& what, Clock::duration patience,
           const std::function<bool()>& isDone) {
    const auto begin = Clock::now();
    while (!isDone()) {
        const auto passed = Clock::now() - begin;
        if (passed > patience) {
            return false;
        }
        if (passed > kNoticeable) {
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(passed);
            terminal.progress(what, std::to_string(seconds.count()) + " s");
        }
        const Notice notice =
            EventQueue::instance().next(Clock::now() + kLook, [](const Notice&) { return false; });
        if (notice.source == Notice::Source::Interrupted) {
            terminal.endProgress();
            std::cerr << "voxtrelctl: interrupted\n";
            std::_Exit(EXIT_FAILURE);
        }
    }
    terminal.endProgress();
    return true;
}

/// Held by one spawner at a time; the kernel frees it when its holder ends.
class SpawnLock {
public:
    explicit SpawnLock(Terminal& terminal) {
        const bool isOurs = android::makeServiceManagerFolder();
        const std::string path = android::serviceManagerSocket() + ".spawn";
        mFile = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (mFile < 0 || !isOurs) {
            const int error = mFile < 0 ? errno : EPERM;
            throw Failure(TTS::STATUS_SERVICE_NOT_FOUND,
                          "cannot use " + path + ": " + std::generic_category().message(error),
                          "set VOXTREL_BINDER_SOCKET to a path in a folder of your own");
        }
        if (!await(terminal, "waiting for another voxtrelctl that starts the service", kPatience,
                   [this] { return flock(mFile, LOCK_EX | LOCK_NB) == 0; })) {
            throw Failure(TTS::STATUS_SERVICE_NOT_FOUND,
                          "another voxtrelctl has been starting the service for a minute",
                          "see who holds " + path);
        }
    }
    ~SpawnLock() { close(mFile); }
    SpawnLock(const SpawnLock&) = delete;
    SpawnLock& operator=(const SpawnLock&) = delete;

private:
    int mFile = -1;
};

Answer ask(const android::sp<android::IBinder>& service) {
    TTS::Capabilities can;
    (void)TTS::ITextToSpeechFestival::asInterface(service)->getCapabilities(can);
    if (can.ready) {
        return Answer::Ready;
    }
    return service->pingBinder() == android::OK ? Answer::NotReady : Answer::No;
}

/// A service that hangs would keep this thread for ever, so another one asks.
Answer askInTime() {
    const android::sp<android::IBinder> service = findService();
    if (service == nullptr) {
        return Answer::No;
    }
    std::packaged_task<Answer()> question([service] { return ask(service); });
    std::future<Answer> answer = question.get_future();
    std::thread asker(std::move(question));
    const bool answered = answer.wait_for(kAnswerPatience) == std::future_status::ready;
    settle(std::move(asker), answered);
    return answered ? answer.get() : Answer::Hangs;
}

/// Waits until a program that was started can be used.
void awaitUsable(Terminal& terminal, Daemon& daemon, const std::string& name,
                 const std::function<bool()>& isUsable) {
    bool usable = false;
    const bool settled = await(terminal, name + " has been started", kPatience, [&] {
        usable = isUsable();
        return usable || daemon.hasEnded();
    });
    if (usable) {
        return;
    }
    const std::string detail = settled ? daemon.obituary()
                                       : name + " (process " + std::to_string(daemon.pid()) +
                                             ") has been started and cannot be used after a minute";
    throw Failure(TTS::STATUS_SERVICE_NOT_FOUND, detail, "see " + daemon.logPath());
}

/// @return whether it had to be started.
bool ensureManager(Terminal& terminal) {
    if (isServiceManagerThere()) {
        return false;
    }
    const std::string name = "voxtrel-servicemanager";
    Daemon daemon(name, {"--exit-when-idle", kIdleSeconds, "--log-level", "info"});
    awaitUsable(terminal, daemon, name, [] { return isServiceManagerThere(); });
    return true;
}

void awaitRegistration(Terminal& terminal) {
    (void)await(terminal, "waiting for a service that may be about to start", kRegistrationPatience,
                isServiceRegistered);
}

/// One that is there but hangs is left to the command, which says so.
void ensureService(Terminal& terminal) {
    Answer answer = Answer::No;
    (void)await(terminal, "the service is there and loads its voices", kPatience, [&answer] {
        answer = askInTime();
        return answer != Answer::NotReady;
    });
    if (answer != Answer::No) {
        return;
    }
    const std::string name = "voxtreld";
    Daemon daemon(name,
                  {"--user-profile", "--exit-when-idle", kIdleSeconds, "--log-level", "info"});
    awaitUsable(terminal, daemon, name, [] { return askInTime() == Answer::Ready; });
}

}  // namespace

void ensureRunning(Terminal& terminal) {
    startBinderThreads();
    const SpawnLock lock(terminal);
    if (!ensureManager(terminal)) {
        awaitRegistration(terminal);
    }
    ensureService(terminal);
}

}  // namespace voxtrelctl
