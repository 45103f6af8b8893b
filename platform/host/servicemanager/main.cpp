// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "binder/ProcessState.h"
#include "servicemanager/Activation.h"
#include "servicemanager/Options.h"
#include "servicemanager/Registry.h"
#include "socket/SocketTransport.h"
#include "support/Log.h"

namespace {

using android::transport::LogLevel;
using Clock = std::chrono::steady_clock;

// A line for each change, though any process may add a service again and again: as many a second as
// when all names that there can be come and go.
constexpr int kMaxLines = 2048;

android::transport::LineLog gLog{kMaxLines};
int gMaxVerbose = 0;

void log(LogLevel level, const std::string& line) {
    if (static_cast<int>(level) <= gMaxVerbose) {
        gLog.writeLimited("voxtrel-servicemanager", line, level);
    }
}

/// Null where the driver carries the calls.
android::transport::SocketTransport* sockets() {
    return dynamic_cast<android::transport::SocketTransport*>(&android::transport::transport());
}

sigset_t blockSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

bool listenAtDriver(const android::sp<android::Registry>& registry,
                    const servicemanager::Options& options) {
    android::transport::Transport& driver = android::transport::transport();
    if (options.asksForAccess) {
        log(LogLevel::Error, "calls travel through " + driver.contextPlace() +
                                 " and no socket: give that the mode and the group of "
                                 "--socket-mode and --socket-group");
        return false;
    }
    // With one thread, the notice of a service's death is handled before the look-ups that the
    // driver has queued behind it.
    driver.setMaxThreads(1);
    return driver.becomeContext(registry);
}

bool listen(const android::sp<android::Registry>& registry,
            const servicemanager::Options& options) {
    std::string error;
    android::transport::Fd socket = servicemanager::takeListeningSocket(error);
    if (!error.empty()) {
        log(LogLevel::Error, error);
        return false;
    }
    if (socket.valid() && options.asksForAccess) {
        log(LogLevel::Error,
            "was handed a socket, whose mode and group are not --socket-mode's and "
            "--socket-group's: write SocketMode= and SocketGroup= into the socket unit");
        return false;
    }
    if (sockets() == nullptr) {
        return listenAtDriver(registry, options);
    }
    return socket.valid() ? sockets()->becomeContextAt(std::move(socket), registry)
                          : sockets()->becomeContext(registry, options.access);
}

/// Not by the log, which takes memory.
void write(std::string_view line) {
    (void)!::write(STDERR_FILENO, line.data(), line.size());
}

/// How long the service manager has been idle.
Clock::duration idleTime(const android::sp<android::Registry>& registry) {
    const auto since = sockets() != nullptr ? sockets()->unusedSince() : std::nullopt;
    return since.has_value() && registry->listServices().empty() ? Clock::now() - *since
                                                                 : Clock::duration::zero();
}

timespec asTimespec(Clock::duration duration) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(duration - seconds);
    return {static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
}

/// Serves until a signal comes, or until it has been idle for so long and no client is connecting.
/// @return why it ends.
std::string serve(const sigset_t& signals, const android::sp<android::Registry>& registry,
                  Clock::duration idleLimit) {
    const bool stays = idleLimit == Clock::duration::zero();
    for (;;) {
        const Clock::duration idle = idleTime(registry);
        if (!stays && idle >= idleLimit && sockets()->leaveIfUnused()) {
            return "idle";
        }
        const timespec left = asTimespec(idle < idleLimit ? idleLimit - idle : idleLimit);
        const int signal = sigtimedwait(&signals, nullptr, stays ? nullptr : &left);
        if (signal > 0) {
            return signal == SIGINT ? "interrupted" : "stopped";
        }
    }
}

/// For what nobody catches. Its services register with the next service manager.
[[noreturn]] void endAtOnce() {
    const std::exception_ptr caught = std::current_exception();
    try {
        if (caught != nullptr) {
            std::rethrow_exception(caught);
        }
        write("voxtrel-servicemanager: it does not know how to go on\n");
    } catch (const std::bad_alloc&) {
        write("voxtrel-servicemanager: out of memory: it ends\n");
    } catch (...) {
        write("voxtrel-servicemanager: an exception that it does not know: it ends\n");
    }
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

int main(int argc, char** argv) {
    std::set_terminate(endAtOnce);
    servicemanager::Options options;
    int exitStatus = EXIT_SUCCESS;
    if (!servicemanager::parseOptions(argc, argv, options, exitStatus)) {
        return exitStatus;
    }
    gMaxVerbose = options.logLevel;
    const sigset_t signals = blockSignals();
    const android::sp<android::Registry> registry = new android::Registry(
        [](LogLevel level, const std::string& line) { log(level, line); }, options.reserved);
    if (!listen(registry, options)) {
        return EXIT_FAILURE;
    }
    android::ProcessState::self()->startThreadPool();
    log(LogLevel::Info, "ready");
    servicemanager::tellReady();
    const std::string reason = serve(signals, registry, options.idleLimit);
    servicemanager::tellStopping();
    log(LogLevel::Info, reason);
    // Does not wait for calls that are being served.
    std::_Exit(EXIT_SUCCESS);
}
