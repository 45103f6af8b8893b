// SPDX-License-Identifier: Apache-2.0
#include "tools/Spawn.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <optional>
#include <system_error>

#include "binder/ServiceManagerSocket.h"
#include "tools/Connection.h"
#include "tools/Daemon.h"

namespace voxtrelctl {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using voxtrel::Reach;

constexpr auto kLook = milliseconds(10);
constexpr auto kNoticeable = milliseconds(800);
/// Voices come from a disk that may be slow.
constexpr auto kStartTimeout = std::chrono::seconds(60);
constexpr auto kAnswerTimeout = std::chrono::seconds(5);
/// Who has started the service manager, such as a unit of systemd's, may start the service next.
constexpr auto kRegistrationTimeout = std::chrono::seconds(5);
constexpr const char* kIdleSeconds = "300";

/// Looks again and again until `isDone`, and says whether it was in time.
bool await(Terminal& terminal, const std::string& what, Clock::duration timeout,
           const std::function<bool()>& isDone) {
    const auto begin = Clock::now();
    while (!isDone()) {
        const auto passed = Clock::now() - begin;
        if (passed > timeout) {
            return false;
        }
        if (passed > kNoticeable) {
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(passed);
            terminal.progress(what, std::to_string(seconds.count()) + " s");
        }
        std::this_thread::sleep_for(kLook);
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
        if (!await(terminal, "waiting for another voxtrelctl that starts the service",
                   kStartTimeout, [this] { return flock(mFile, LOCK_EX | LOCK_NB) == 0; })) {
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

/// One that does not let this user in is there, too.
bool isManagerThere() {
    const std::string path = android::serviceManagerSocket();
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int file = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const auto* const plain = reinterpret_cast<const sockaddr*>(&address);
    const int error = connect(file, plain, sizeof address) == 0 ? 0 : errno;
    close(file);
    return error == 0 || error == EAGAIN || error == EACCES || error == EPERM;
}

Reach look(Connection& connection) {
    return connection.client().diagnose(kLook).reach;
}

bool isServiceThere(Connection& connection) {
    const Reach reach = look(connection);
    return reach == Reach::Connected || reach == Reach::Loading || reach == Reach::ServiceSilent ||
           reach == Reach::NotAdmitted || reach == Reach::NotTrusted;
}

/// Waits until a program that was started can be used.
void awaitUsable(Terminal& terminal, Daemon& daemon, const std::string& name,
                 const std::function<bool()>& isUsable) {
    bool usable = false;
    const bool settled = await(terminal, name + " has been started", kStartTimeout, [&] {
        usable = isUsable();
        return usable || daemon.hasEnded();
    });
    if (usable) {
        return;
    }
    const std::string detail = settled ? daemon.howItEnded()
                                       : name + " (process " + std::to_string(daemon.pid()) +
                                             ") has been started and cannot be used after a minute";
    throw Failure(TTS::STATUS_SERVICE_NOT_FOUND, detail, "see " + daemon.logPath());
}

/// @return whether it had to be started.
bool ensureManager(Terminal& terminal) {
    if (isManagerThere()) {
        return false;
    }
    const std::string name = "voxtrel-servicemanager";
    Daemon daemon(name, {"--exit-when-idle", kIdleSeconds, "--log-level", "info"});
    awaitUsable(terminal, daemon, name, &isManagerThere);
    return true;
}

/// One that is there but hangs, or cannot be reached, is left to the command, which says so.
void ensureService(Connection& connection, Terminal& terminal) {
    Reach reach = Reach::NoService;
    (void)await(terminal, "the service manager does not answer", kAnswerTimeout, [&] {
        reach = look(connection);
        return reach != Reach::ManagerSilent;
    });
    (void)await(terminal, "the service is there and loads its voices", kStartTimeout, [&] {
        reach = look(connection);
        return reach != Reach::Loading;
    });
    if (reach != Reach::NoService) {
        return;
    }
    const std::string name = "voxtreld";
    Daemon daemon(name,
                  {"--user-profile", "--exit-when-idle", kIdleSeconds, "--log-level", "info"});
    awaitUsable(terminal, daemon, name, [&] { return look(connection) == Reach::Connected; });
}

/// Nobody is asked to end any more when the command begins.
void throwIfInterrupted(bool isInterrupted) {
    if (isInterrupted) {
        throw Interrupted();
    }
}

}  // namespace

void ensureRunning(const Options& options, Terminal& terminal) {
    std::optional<Interrupts> interrupts(std::in_place);
    const SpawnLock lock(terminal);
    const bool isNew = ensureManager(terminal);
    throwIfInterrupted(interrupts->hasCome());
    interrupts.reset();  // a connection has its own
    Connection connection(options, terminal);
    if (!isNew) {
        (void)await(terminal, "waiting for a service that may be about to start",
                    kRegistrationTimeout, [&] { return isServiceThere(connection); });
    }
    ensureService(connection, terminal);
    throwIfInterrupted(connection.isInterrupted());
}

}  // namespace voxtrelctl
