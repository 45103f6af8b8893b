// SPDX-License-Identifier: Apache-2.0
#include "service/Lifetime.h"

#include <ctime>

namespace voxtreld {
namespace {

using Duration = std::chrono::steady_clock::duration;

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

bool signalComesWithin(const sigset_t& signals, std::chrono::milliseconds time) {
    const timespec limit = asTimespec(time);
    return sigtimedwait(&signals, nullptr, &limit) > 0;
}

std::string waitForEnd(const sigset_t& signals, VoxtrelService& service,
                       std::chrono::seconds idleLimit) {
    if (idleLimit.count() == 0) {
        int signal = 0;
        sigwait(&signals, &signal);
        return signal == SIGINT ? "interrupted" : "stopped";
    }
    return waitForSignalOrIdleness(signals, service, idleLimit);
}

}  // namespace voxtreld
