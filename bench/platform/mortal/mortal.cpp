// SPDX-License-Identifier: Apache-2.0
// A process that is there to be killed: as small as a program of the runtime gets, so that the
// kernel has little to clear away. With an argument it is a service of that name, else it only
// waits. It says one byte when it is ready.
#include <binder/Binder.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>

#include "bench/platform/mortal/ReadySocket.h"

namespace {

bool serve(const char* name) {
    android::ProcessState::self()->startThreadPool();
    return android::defaultServiceManager()->addService(android::String16(name),
                                                        new android::BBinder()) == android::OK;
}

}  // namespace

int main(int argc, char** argv) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (argc > 1 && !serve(argv[1])) {
        return 1;
    }
    (void)send(bench::kReadySocket, "r", 1, MSG_NOSIGNAL);
    for (;;) {
        pause();
    }
}
