// SPDX-License-Identifier: Apache-2.0
#include "service/Lifetime.h"

#include <binder/ProcessState.h>
#include <unistd.h>

#include <atomic>
#include <ctime>

namespace voxtreld {
namespace {

using Duration = std::chrono::steady_clock::duration;

class ManagerDeath : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>& /*who*/) override {
        mTold = true;
        kill(getpid(), SIGTERM);
    }
    bool told() const { return mTold; }

private:
    std::atomic<bool> mTold{false};
};

timespec asTimespec(Duration duration) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(duration - seconds);
    return {static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
}

std::string waitForSignalOrIdleness(const sigset_t& signals, VoxtrelService& service,
                                    Duration limit) {
    for (;;) {
        if (service.closeIfIdle(limit)) {
            return "idle";
        }
        const Duration idle = service.idleTime();
        const timespec left = asTimespec(idle < limit ? limit - idle : Duration(1));
        const int signal = sigtimedwait(&signals, nullptr, &left);
        if (signal > 0) {
            return signal == SIGINT ? "interrupted" : "stopped";
        }
    }
}

}  // namespace

sigset_t blockSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    return signals;
}

std::string waitForEnd(const sigset_t& signals, VoxtrelService& service,
                       std::chrono::seconds idleLimit) {
    if (idleLimit.count() == 0) {
        int signal = 0;
        sigwait(&signals, &signal);
        return signal == SIGINT ? "interrupted" : "stopped";
    }
    const auto manager = android::ProcessState::self()->getContextObject(nullptr);
    const android::sp<ManagerDeath> death = new ManagerDeath;
    if (manager == nullptr || manager->linkToDeath(death, nullptr, 0) != android::OK) {
        return "the service manager has died";
    }
    const std::string reason = waitForSignalOrIdleness(signals, service, idleLimit);
    return death->told() ? "the service manager has died" : reason;
}

}  // namespace voxtreld
