// SPDX-License-Identifier: Apache-2.0
#include <csignal>
#include <iostream>
#include <system_error>
#include <thread>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tools/Commands.h"
#include "tools/Errors.h"
#include "tools/Lock.h"

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
int await(pid_t child) {
    std::thread waiter([child] {
        int status = 0;
        (void)waitpid(child, &status, 0);
        EventQueue::instance().post({Notice::Source::ChildEnded, {}, status});
    });
    Notice notice;
    while (notice.source != Notice::Source::ChildEnded) {
        notice = EventQueue::instance().next();
        if (notice.source == Notice::Source::Interrupted && notice.status != SIGINT) {
            (void)kill(child, notice.status);
        }
        if (notice.source == Notice::Source::ServiceDied) {
            std::cerr << "voxtrelctl: the service died, and the lock with it\n";
        }
    }
    waiter.join();
    return exitStatus(notice.status);
}

}  // namespace

int runBreakLock(const Options& /*options*/, Terminal& terminal) {
    Session session(terminal);
    const uint32_t holder = askForLock(session, "who holds the lock");
    if (holder == session.client()->mPid) {
        (void)session.client()->unlock();
        terminal.line("nobody held the lock");
        return 0;
    }
    breakLock(session, holder);
    terminal.line("the lock of process " + std::to_string(holder) + " is broken");
    return 0;
}

int runLock(const Options& options, Terminal& terminal) {
    Session session(terminal);
    const LockHold hold(session);
    pid_t child = 0;
    const int error = start(options.words, terminal.output(), child);
    if (error != 0) {
        std::cerr << "voxtrelctl: " << options.words.front() << ": "
                  << std::generic_category().message(error) << "\n";
        return error == ENOENT ? kNoSuchCommand : kCannotRun;
    }
    return await(child);
}

}  // namespace voxtrelctl
