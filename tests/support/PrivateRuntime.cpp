// SPDX-License-Identifier: Apache-2.0
#include "tests/support/PrivateRuntime.h"

#include <binder/IBinder.h>
#include <binder/ProcessState.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Eventually.h"

namespace voxtrel_test {

PrivateRuntime::PrivateRuntime(const std::string& program) : mProgram(program) {
    char folder[] = "/tmp/voxtrel-test-XXXXXX";
    mFolder = mkdtemp(folder) != nullptr ? folder : "/nonexistent";
    setenv("VOXTREL_BINDER_SOCKET", socket().c_str(), 1);
    startManager();
}

PrivateRuntime::~PrivateRuntime() {
    killManager();
    unlink(socket().c_str());
    unlink((socket() + ".lock").c_str());
    rmdir(mFolder.c_str());
}

std::string PrivateRuntime::place() const {
    const char* driver = getenv("VOXTREL_BINDER_DRIVER");
    return driver != nullptr && *driver != '\0' ? driver : socket();
}

bool PrivateRuntime::admitOthers() const {
    return place() != socket() ||
           (chmod(mFolder.c_str(), 0711) == 0 && chmod(socket().c_str(), 0777) == 0);
}

void PrivateRuntime::killManager() {
    mManager.reset();
}

void PrivateRuntime::startManager() {
    mManager = std::make_unique<ChildProcess>(std::vector<std::string>{mProgram});
    // Before the death of one that was killed has been told, its reference is still given out.
    (void)eventually([] {
        const auto manager = android::ProcessState::self()->getContextObject(nullptr);
        return manager != nullptr && manager->pingBinder() == android::OK;
    });
}

}  // namespace voxtrel_test
