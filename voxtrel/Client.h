// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_H
#define VOXTREL_CLIENT_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "voxtrel/Diagnosis.h"
#include "voxtrel/Event.h"
#include "voxtrel/Result.h"
#include "voxtrel/Settings.h"
#include "voxtrel/Speech.h"
#include "voxtrel/Utterance.h"

namespace voxtrel {

class ClientState;

namespace testing {
class FakeService;
}

using Milliseconds = std::chrono::milliseconds;

/// The thread on which a client's handler runs.
enum class HandlerThread {
    OfTheLibrary,      ///< one for all clients of the process that choose it
    OfTheApplication,  ///< the one that calls `Client::dispatch`
};

struct ClientOptions {
    /// How long a call may wait for the service; negative counts as 0.
    Milliseconds deadline = Milliseconds(2000);

    /// How long the end of the client may wait until the service has what was said. Not waited for
    /// are the end of the speech, and a service that is not there.
    Milliseconds linger = Milliseconds(2000);

    HandlerThread handlerThread = HandlerThread::OfTheLibrary;

    /// Set: a service is talked to, and told what is to be said, only if it is this user's own,
    /// root's, or that of one of these users, by number. Not set: anybody's. Without effect on a
    /// device, whose service manager does not tell whose a service is and decides itself who may
    /// register one. That of the client that begins the connection of the process counts.
    std::optional<std::vector<std::uint32_t>> trustedUsers = {};

    /// Stands in for the service in the tests of an application; must outlive the client.
    testing::FakeService* fake = nullptr;
};

/// Holds the service's lock until it ends: nobody else can speak or change settings meanwhile.
/// Moves, does not copy. Called on: any one thread.
class Lock {
public:
    Lock(Lock&& other) noexcept = default;
    Lock& operator=(Lock&& other) noexcept;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock();

    /// False once the service that gave it has died, or the lock was broken.
    bool isHeld() const noexcept;

    /// Gives it back before the end.
    void release() noexcept;

private:
    friend class Client;
    Lock(std::shared_ptr<ClientState> client, std::uint64_t number) noexcept
        : mClient(std::move(client)), mNumber(number) {}
    std::shared_ptr<ClientState> mClient;
    std::uint64_t mNumber = 0;
};

/// Speaks through the service.
///
/// The constructor returns at once. The client finds the service by itself, and again after each
/// death; what is said meanwhile waits. No call waits longer than its deadline, whatever the
/// service or the service manager does; `say`, `pause` and `stop` do not wait at all. Clients of
/// one process share one connection, two threads, and the lock, and do not know of each other
/// otherwise.
///
/// A process that uses this class does not use `TTS::TTSClientPrivate` as well: the service knows
/// processes, and tells a process's events to whoever registered last. A process that
/// is forked off one that has had a client can have none: it starts a program of its own (exec),
/// and lets the clients of its parent be.
///
/// Called on: any thread, handlers included; the destructor may run inside the client's own
/// handler, and returns only when no handler of it runs on another thread. Nothing is printed.
class Client {
public:
    /// @param name what the application is called; nobody is told, and nothing depends on it.
    /// @throws std::bad_alloc, std::system_error: there is no memory, or no thread to be had.
    explicit Client(const std::string& name = {}, const ClientOptions& options = {});

    /// Utterances without an outcome get one: Lost, `Status::Closed`, which no event tells, since
    /// the handler is called no more. What the service already has is spoken all the same. Waits
    /// for the service for `linger` at most, and then, if this is the last client of the process,
    /// for `deadline` to leave it.
    ~Client();

    /// Ends it now, as the destructor does, but waits for `deadline` at most. Then it may be
    /// destroyed or assigned to, and nothing else.
    void close(Milliseconds deadline) noexcept;
    /// One that was moved from may be destroyed or assigned to, and nothing else.
    Client(Client&&) noexcept;
    Client& operator=(Client&&) noexcept;
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Speaks a text after what was said before. A text that begins with `<speak` is marked up
    /// (SSML) where the service understands it.
    ///
    /// A text of any length is spoken; it is held in memory until then. One that is marked up may
    /// have 262144 bytes. An utterance that cannot be spoken is Refused: at once if the text is not
    /// UTF-8 or an option is no language or number, and else when the service is known.
    Utterance say(std::string_view text, const SpeechOptions& options = {});

    /// Silence among what is said, of 0 ms to 49 days. A service may refuse one that is longer than
    /// a minute, as voxtreld does (`Status::BadParameter`).
    Utterance pause(Milliseconds length);

    /// Ends what this client said; the outcomes come as the service tells them. A request that is
    /// lost on its way is made again after a second in which what it should end goes on, unless
    /// this client has said something since.
    void stop();

    /// Ends what anybody said. Of others nothing is told, so that Ok means that what this process
    /// said has ended, and that the service has served a request sent behind this one.
    /// @return Lost: what this process said goes on. PermissionDenied: this user may not.
    Result<void> stopEverybody(std::optional<Milliseconds> deadline = {});

    /// Ends what another process of this user said, which may have ended since. Not every service
    /// lets it.
    /// @return PermissionDenied: it is not this user's, or the service has nothing of it.
    Result<void> stopProcess(std::uint32_t process, std::optional<Milliseconds> deadline = {});

    /// Waits until every utterance of this client has an outcome.
    Result<void> waitForAll(Milliseconds timeout);

    /// What `say` uses where its options are not set.
    void setDefaults(const SpeechOptions& defaults);
    SpeechOptions defaults() const;

    /// Calls `handler` for what happens from now on, and for what an earlier one has not been
    /// called for yet. That has returned then, unless it is the caller. Empty: no events; what has
    /// not been handled is forgotten. What it throws is the application's loss: it is caught and
    /// forgotten.
    void onEvent(std::function<void(const Event&)> handler);

    /// Readable while there is something to dispatch; for `poll`. Of this client until it ends.
    /// With `HandlerThread::OfTheApplication` only, else -1; -1 also when there was no descriptor
    /// to be had.
    int fd() const noexcept;

    /// Calls the handler for all that has happened, on this thread; or for the first `max` of it,
    /// after which `fd` is still readable if there is more.
    /// @return how many events there were; 0 inside a handler, and where the library's thread calls
    /// the handler.
    std::size_t dispatch(std::size_t max = std::numeric_limits<std::size_t>::max());

    bool isConnected() const noexcept;

    /// @return why there is no service, when there is none in time.
    Result<void> waitUntilConnected(std::optional<Milliseconds> deadline = {});

    /// How far the way to the service goes, and what is in the way. Says so as soon as it is known,
    /// and at once where there is no service manager; while nobody answers it waits a moment for an
    /// answer, and no longer than the deadline.
    Diagnosis diagnose(std::optional<Milliseconds> deadline = {});

    /// Waits until the service has everything that this client said, and has told what it refuses:
    /// what has no outcome then is being spoken or waits at the service for its turn. Of a long
    /// text that may be as late as it takes to speak all but the last 64 KiB.
    /// @return TimedOut, or why there is no service; not what became of the utterances.
    Result<void> waitUntilTaken(std::optional<Milliseconds> deadline = {});

    /// Asks the service for an event, and waits until it has told it: a service that does not will
    /// tell of nothing else either. After a call that timed out the next one waits on.
    /// @return TimedOut, or why there is no service.
    Result<void> checkEvents(std::optional<Milliseconds> deadline = {});

    /// What the service can do.
    Result<Features> features(std::optional<Milliseconds> deadline = {});

    /// What the service tells of its settings; the others are not set. From here to
    /// `resetSettings`:
    /// @return Lost where the request, or the answer to it, got lost on its way; NotSupported where
    /// the service does not know it, by which a setting of these is not set.
    Result<GlobalSettings> settings(std::optional<Milliseconds> deadline = {});

    /// Changes those that are set, one after the other, and ends with the first that is refused.
    /// @return Lost where one got lost on its way: those behind it may be changed all the same, and
    ///         `settings` tells which.
    Result<void> change(const GlobalSettings& settings, std::optional<Milliseconds> deadline = {});
    Result<bool> isOn(Switch which, std::optional<Milliseconds> deadline = {});
    Result<void> turn(Switch which, bool on, std::optional<Milliseconds> deadline = {});

    /// Puts the settings of the service back to what it was delivered with.
    Result<void> resetSettings(std::optional<Milliseconds> deadline = {});

    /// Takes the lock. A process has it once.
    Result<Lock> lock(std::optional<Milliseconds> deadline = {});

    Result<LockState> lockState(std::optional<Milliseconds> deadline = {});

    /// Frees the lock, whoever has it, if this user may.
    /// @return the process that had it; 0: nobody. Locked: another client of this process.
    Result<std::uint32_t> breakLock(std::optional<Milliseconds> deadline = {});

    /// Writes the defaults of this client into a profile (docs/profile-format.md). What was there
    /// stays as it is unless all could be written. Volume and pitch become whole numbers, which the
    /// format has; a voice is written as its number, so that one named otherwise needs a
    /// connection. `SpeechOptions::onLoss` is not kept.
    /// @return ProfileError with the system's reason; BadParameter for what a profile cannot hold.
    Result<void> saveProfile(const std::string& path) const;

    /// Reads them from there, but for `SpeechOptions::onLoss`, which stays. What the profile leaves
    /// unset, or what is no language, is not set afterwards.
    /// @return ProfileError with the system's reason; then nothing has changed.
    Result<void> loadProfile(const std::string& path);

private:
    std::shared_ptr<ClientState> mState;
};

}  // namespace voxtrel

#endif
