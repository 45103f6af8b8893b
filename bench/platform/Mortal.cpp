// SPDX-License-Identifier: Apache-2.0
#include "bench/platform/Mortal.h"

#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "bench/platform/mortal/ReadySocket.h"

extern char** environ;  // NOLINT: POSIX

namespace bench {

namespace {

[[noreturn]] void fail(const char* what) {
    std::perror(what);
    std::exit(1);  // NOLINT(concurrency-mt-unsafe): nobody else ends the program
}

pid_t spawn(const std::string& program, const std::string& service, int socket) {
    char* const arguments[] = {const_cast<char*>(program.c_str()),
                               service.empty() ? nullptr : const_cast<char*>(service.c_str()),
                               nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, socket, kReadySocket);
    pid_t pid = -1;
    const int failed = posix_spawn(&pid, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed == 0 ? pid : -1;
}

}  // namespace

Mortal::Mortal(const std::string& program, const std::string& service) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        fail("socketpair");
    }
    mPid = spawn(program, service, ends[1]);
    close(ends[1]);
    mSocket = ends[0];
    char byte = 0;
    if (mPid < 0 || recv(mSocket, &byte, 1, 0) != 1) {
        fail("a process that is to be killed did not start");
    }
}

Mortal::~Mortal() {
    kill();
    waitpid(mPid, nullptr, 0);
    close(mSocket);
}

void Mortal::kill() const {
    (void)::kill(mPid, SIGKILL);  // until it is waited for, the number is its own
}

void Mortal::waitForEndOfFile() const {
    char byte = 0;
    (void)recv(mSocket, &byte, 1, 0);
}

}  // namespace bench
