// SPDX-License-Identifier: Apache-2.0
#include "tools/Connection.h"

#include <poll.h>

#include <algorithm>
#include <system_error>

#include "tools/Owner.h"

namespace voxtrelctl {
namespace {

using std::chrono::milliseconds;
using voxtrel::Diagnosis;
using voxtrel::Reach;
using voxtrel::Status;

/// A search that is over by then shows no progress. A service manager that was started together
/// with the command is there by then.
constexpr milliseconds kNoticeable(800);
constexpr milliseconds kProgressStep(1000);

/// Kept back of the time: to learn what became of a request, and to leave.
constexpr milliseconds kLongestReserve(2000);
constexpr int kReserveShare = 5;

/// Threads that need not wait for anybody end in that time.
constexpr milliseconds kToEnd(200);

voxtrel::ClientOptions optionsOf(const Options& options) {
    voxtrel::ClientOptions chosen;
    chosen.deadline = options.timeout;
    chosen.linger = milliseconds::zero();  // what is said is waited for in any case
    // `lock` waits for its command.
    chosen.handlerThread = options.command == Command::Lock
                               ? voxtrel::HandlerThread::OfTheLibrary
                               : voxtrel::HandlerThread::OfTheApplication;
    chosen.trustedUsers = trustedUsers(options);
    return chosen;
}

bool isSilent(Status status) {
    return status == Status::TimedOut || status == Status::Unresponsive;
}

milliseconds until(std::chrono::steady_clock::time_point end) {
    const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
    return std::max(left, milliseconds::zero());
}

/// What waiting does not change, after so long of it.
bool isHopeless(const Diagnosis& seen, std::chrono::nanoseconds passed) {
    if (seen.reach == Reach::NoManager) {
        return passed >= kNoticeable || seen.transport == "driver";
    }
    return seen.reach == Reach::ManagerNotPermitted || seen.reach == Reach::NotTrusted ||
           seen.reach == Reach::NotAdmitted;
}

std::string placeOf(const Diagnosis& seen) {
    const std::string why =
        seen.error != 0 ? " (" + std::generic_category().message(seen.error) + ")" : "";
    return seen.path.empty() ? "" : " at " + seen.path + why;
}

std::string silence(const voxtrel::Peer& peer) {
    const std::string process = "process " + std::to_string(peer.process);
    if (peer.isStopped) {
        return " does not answer (" + process + " is stopped)";
    }
    return " does not answer" + (peer.process != 0 ? " (" + process + ")" : "");
}

std::string remedyFor(const voxtrel::Peer& peer) {
    return peer.isStopped ? "continue it with: kill -CONT " + std::to_string(peer.process)
                          : "it hangs or is busy; end it and start it again";
}

std::string progressOf(const Diagnosis& seen, milliseconds timeout) {
    const std::string limit = std::to_string((timeout.count() + 999) / 1000) + " s";
    switch (seen.reach) {
        case Reach::Loading:
            return "the service is there and loads its voices (up to " + limit + ")";
        case Reach::ServiceSilent:
            return "the service" + silence(seen.service) + "; waiting for up to " + limit;
        case Reach::ManagerSilent:
            return "the service manager" + silence(seen.manager) + "; waiting for up to " + limit;
        default:
            return "looking for the service for up to " + limit + "; is voxtreld running?";
    }
}

Problem noManager(const Diagnosis& seen) {
    constexpr auto kCode = TTS::STATUS_SERVICE_NOT_FOUND;
    if (seen.transport != "driver") {
        return {kCode, "there is no service manager" + placeOf(seen),
                "start it with: voxtrel-servicemanager (same VOXTREL_BINDER_SOCKET as here)"};
    }
    if (seen.error != 0) {
        return {kCode, "there is no binder driver" + placeOf(seen),
                "load it with: modprobe binder_linux devices=binder"};
    }
    return {kCode, "no service manager answers" + placeOf(seen),
            "start the device's own, or: voxtrel-servicemanager (same VOXTREL_BINDER_DRIVER as "
            "here)"};
}

Problem managerNotPermitted(const Diagnosis& seen) {
    constexpr auto kCode = TTS::STATUS_PERMISSION_DENIED;
    if (seen.transport == "driver") {
        return {kCode, "this user may not open the binder driver" + placeOf(seen),
                "let this user read and write " + seen.path};
    }
    return {kCode, "this user may not open the service manager's socket" + placeOf(seen),
            "ask whoever runs it to let this user in"};
}

}  // namespace

Problem problemIn(const Diagnosis& seen) {
    switch (seen.reach) {
        case Reach::NoManager:
            return noManager(seen);
        case Reach::ManagerNotPermitted:
            return managerNotPermitted(seen);
        case Reach::ManagerSilent:
            return {TTS::STATUS_NO_SERVICE, "the service manager" + silence(seen.manager),
                    remedyFor(seen.manager)};
        case Reach::NotTrusted:
            return untrustedOwner(seen.service.user);
        case Reach::ServiceSilent:
            return {TTS::STATUS_NO_SERVICE, "the service" + silence(seen.service),
                    remedyFor(seen.service)};
        case Reach::Loading:
            return {TTS::STATUS_NO_SERVICE, "it is registered and still loads its voices",
                    "wait a little, or see what it logs about its voices"};
        case Reach::NotAdmitted:
            return {TTS::STATUS_PERMISSION_DENIED,
                    "the service does not admit this client: its user may not connect, or there "
                    "are too many clients",
                    "ask whoever runs it; of voxtreld see its log and voxtreld-policy(5)"};
        default:
            return {TTS::STATUS_SERVICE_NOT_FOUND, "",
                    meaningOf(TTS::STATUS_SERVICE_NOT_FOUND).remedy};
    }
}

Connection::Connection(const Options& options, Terminal& terminal)
    : mTimeout(options.timeout),
      mReserve(std::min(kLongestReserve, mTimeout / kReserveShare)),
      mIsVerbose(options.verbose),
      mTerminal(terminal),
      mClient("voxtrelctl", optionsOf(options)) {
    restart();
    onSignal([this](int) {
        mClient.stop();
        return false;
    });
}

Connection::~Connection() {
    onSignal({});
    mClient.close(std::max(until(mEnd), kToEnd));
}

milliseconds Connection::left() const {
    return until(mEnd - mReserve);
}

void Connection::restart() {
    mEnd = Clock::now() + mTimeout;
}

Diagnosis Connection::look() {
    return mClient.diagnose(milliseconds::zero());
}

void Connection::fail(const Diagnosis& seen) {
    mTerminal.endProgress();
    const Problem problem = problemIn(seen);
    throw Failure(problem.code, problem.what, problem.remedy);
}

void Connection::connect() {
    const auto begin = Clock::now();
    restart();
    auto step = kNoticeable;
    for (;;) {
        const Diagnosis seen = mClient.diagnose(std::min(until(mEnd), kNoticeable));
        if (seen.reach == Reach::Connected) {
            break;
        }
        const auto passed = Clock::now() - begin;
        if (isHopeless(seen, passed) || until(mEnd) <= milliseconds::zero()) {
            fail(seen);
        }
        if (passed >= kNoticeable) {
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(passed);
            mTerminal.progress(progressOf(seen, mTimeout), std::to_string(seconds.count()) + " s");
            step = kProgressStep;
        }
        if (mClient.waitUntilConnected(std::min(until(mEnd), step))) {
            break;
        }
    }
    mTerminal.endProgress();
    if (mIsVerbose) {
        const Diagnosis seen = look();
        printError("connected to process " + std::to_string(seen.service.process) + " by " +
                   seen.transport + " " + seen.path);
    }
}

bool Connection::dispatch(milliseconds atMost) {
    pollfd news[] = {{mClient.fd(), POLLIN, 0}, {mInterrupts.fd(), POLLIN, 0}};
    (void)poll(news, isInterrupted() ? 1 : 2, static_cast<int>(atMost.count()));
    return mClient.dispatch() > 0;
}

void Connection::dispatchWhileItAnswers() {
    const milliseconds limit = mTimeout / 2;
    if (dispatch(limit) || isInterrupted()) {
        return;
    }
    const auto answer = mClient.isOn(voxtrel::Switch::Speech, limit);
    if (!isSilent(answer.status())) {
        return;
    }
    const Diagnosis seen = look();
    if (seen.reach != Reach::Connected) {
        fail(seen);
    }
}

void Connection::require(const voxtrel::Error& error, const std::string& detail) {
    if (error.status == Status::Ok) {
        return;
    }
    if (isSilent(error.status) || !mClient.isConnected()) {
        const Diagnosis seen = look();
        // One that has just died is not said to have never been there.
        if (seen.reach != Reach::Connected && error.status != Status::NoService) {
            fail(seen);
        }
    }
    const int code = static_cast<int>(error.status);
    if (detail.empty() && error.message != voxtrel::describe(error.status)) {
        throw Failure(code, error.message, "");
    }
    throw Failure(code, detail);
}

bool Connection::isUntold(const voxtrel::Error& error) {
    return error.status == Status::TimedOut && look().reach == Reach::Connected;
}

bool Connection::takesAnyPause() {
    return mClient.diagnose(mReserve / 2).takesAnyPause;
}

void Connection::complain() {
    if (takesAnyPause()) {
        printError(
            "the service takes a pause of 49 days, which it must refuse at "
            "once (docs/writing-a-service.md); it was told to drop it again");
    }
}

}  // namespace voxtrelctl
