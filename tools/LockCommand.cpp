// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <csignal>
#include <system_error>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tools/Commands.h"
#include "tools/Connection.h"
#include "tools/Errors.h"

namespace voxtrelctl {
namespace {

constexpr int kCannotRun = 126;
constexpr int kNoSuchCommand = 127;
constexpr int kSignalBase = 128;

/// The command with the program's real standard output, and with the signals that this program has
/// taken over given back. Returns an errno value, 0 on success.
int start(const std::vector<std::string>& words, int output, pid_t& child) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);

    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    const int error =
        posix_spawnp(&child, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return error;
}

int exitStatus(int waitStatus) {
    return WIFSIGNALED(waitStatus) ? kSignalBase + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

/// Waits for the command; what asks this program to end is passed on to it. Ctrl-C needs no help:
/// the terminal sends it to both.
int await(Connection& connection, pid_t child) {
    connection.onSignal([child](int signal) {
        if (signal != SIGINT) {
            (void)kill(child, signal);
        }
        return true;
    });
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    connection.onSignal({});
    connection.restart();
    return exitStatus(status);
}

void tellOfTheEnd(const voxtrel::Event& event) {
    if (event.kind == voxtrel::Event::Kind::Disconnected) {
        printError("the service died, and the lock with it");
    }
}

voxtrel::Lock take(Connection& connection) {
    auto lock = connection.client().lock(connection.left());
    if (connection.isUntold(lock.error())) {
        throw Unanswered("whether it has given the lock, and the command was not run");
    }
    connection.require(lock.error());
    return *std::move(lock);
}

}  // namespace

int runBreakLock(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    connection.connect();
    const auto broken = connection.client().breakLock(connection.left());
    if (connection.isUntold(broken.error())) {
        throw Unanswered("who holds the lock");
    }
    connection.require(broken.error());
    terminal.line(*broken == 0 ? "nobody held the lock"
                               : "the lock of process " + std::to_string(*broken) + " is broken");
    return 0;
}

int runLock(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    connection.connect();
    const voxtrel::Lock hold = take(connection);
    connection.client().onEvent(&tellOfTheEnd);
    pid_t child = 0;
    const int error = start(options.words, terminal.output(), child);
    if (error != 0) {
        printError(options.words.front() + ": " + std::generic_category().message(error));
        return error == ENOENT ? kNoSuchCommand : kCannotRun;
    }
    return await(connection, child);
}

}  // namespace voxtrelctl
