// SPDX-License-Identifier: Apache-2.0
#include "bench/platform/Mortals.h"

#include <binder/Binder.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

[[noreturn]] void live(int socket) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    char path[256] = {};
    if (recv(socket, path, sizeof(path) - 1, 0) > 0) {
        setenv("VOXTREL_BINDER_SOCKET", path, 1);  // NOLINT(concurrency-mt-unsafe): one thread
        android::ProcessState::self()->startThreadPool();
        android::defaultServiceManager()->addService(android::String16("mortal"),
                                                     new android::BBinder());
        (void)send(socket, "r", 1, MSG_NOSIGNAL);
    }
    for (;;) {
        pause();
    }
}

}  // namespace

Mortals::Mortals(int count) {
    for (int i = 0; i < count; ++i) {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
            std::perror("socketpair");
            std::exit(1);  // NOLINT(concurrency-mt-unsafe): no other thread yet
        }
        const pid_t pid = fork();
        if (pid == 0) {
            close(ends[0]);
            for (const Process& elder : mAll) {
                close(elder.socket);
            }
            live(ends[1]);
        }
        close(ends[1]);
        mAll.push_back({pid, ends[0]});
    }
}

Mortals::~Mortals() {
    for (const Process& one : mAll) {
        kill(one.pid, SIGKILL);
        waitpid(one.pid, nullptr, 0);
        close(one.socket);
    }
}

Mortals::Process Mortals::next() {
    return mAll.at(mUsed++);
}

Mortals::Process Mortals::nextService(const std::string& path) {
    const Process process = next();
    char byte = 0;
    if (send(process.socket, path.data(), path.size(), MSG_NOSIGNAL) < 0 ||
        recv(process.socket, &byte, 1, 0) != 1) {
        std::fprintf(stderr, "a mortal service did not start\n");
    }
    return process;
}

}  // namespace bench
