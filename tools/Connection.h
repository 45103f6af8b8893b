// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_CONNECTION_H
#define VOXTREL_TOOLS_CONNECTION_H

#include "tools/Errors.h"
#include "tools/Interrupts.h"
#include "tools/Options.h"
#include "tools/Terminal.h"
#include "voxtrel/Client.h"

namespace voxtrelctl {

/// Why the service is not reached. Not for `Connected`.
Problem problemIn(const voxtrel::Diagnosis& seen);

/// The service, for a command that needs it. Called on: the main thread.
class Connection {
public:
    /// Begins to look for the service.
    Connection(const Options& options, Terminal& terminal);

    /// Takes leave of the service, which may take what is left of the time and no longer.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Returns when there is a connection; shows what it waits for meanwhile. Throws Failure with
    /// what is in the way: at once if waiting is of no use, else when the time of `--timeout` is
    /// up, which begins here.
    void connect();

    voxtrel::Client& client() { return mClient; }
    bool isInterrupted() const { return mInterrupts.hasCome(); }

    /// In place of having the service drop what was said.
    void onSignal(Interrupts::Handler handler) { mInterrupts.onSignal(std::move(handler)); }

    void onEnd(std::function<void()> lastWords) { mInterrupts.onEnd(std::move(lastWords)); }

    /// A signal is no failure: the command ends with status 0.
    void endQuietly() { mInterrupts.endQuietly(); }

    /// What is left of the time of `--timeout` for requests.
    voxtrel::Milliseconds left() const;

    /// The time begins again: speech, or a command, has come to an end that was waited for.
    void restart();

    /// Waits until there is something to dispatch, and calls the client's handler; or until the
    /// first signal comes, or the time is up.
    /// @return whether there was something.
    bool dispatch(voxtrel::Milliseconds atMost);

    /// dispatch() for as long as it takes, while the service answers: throws Failure when it tells
    /// of nothing for half of the time of `--timeout`, and does not answer a request in the other.
    void dispatchWhileItAnswers();

    /// Throws what `error` means to a person, unless it is Ok: for a service that does not answer,
    /// in the words of what is seen of it.
    void require(const voxtrel::Error& error, const std::string& detail = "");

    template <typename Value>
    Value require(voxtrel::Result<Value> result) {
        require(result.error());
        return *std::move(result);
    }

    /// True for a request of which the service has told nothing, though it answers others.
    bool isUntold(const voxtrel::Error& error);

    /// The service takes a pause of any length, as far as it has told.
    bool takesAnyPause();

    /// Complains of that on standard error.
    void complain();

private:
    using Clock = std::chrono::steady_clock;

    voxtrel::Diagnosis look();
    [[noreturn]] void fail(const voxtrel::Diagnosis& seen);

    const voxtrel::Milliseconds mTimeout;
    const voxtrel::Milliseconds mReserve;  ///< of that, not for requests
    const bool mIsVerbose;
    Terminal& mTerminal;
    Clock::time_point mEnd;
    Interrupts mInterrupts;
    voxtrel::Client mClient;
};

}  // namespace voxtrelctl

#endif
