// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrel_process/Machine.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "tests/support/Listening.h"

namespace voxtrel_test {
namespace {

void kill(std::unique_ptr<ChildProcess>& process) {
    process->kill(SIGKILL);
    EXPECT_EQ(process->finish().status, 128 + SIGKILL);
    process.reset();
}

/// Returns when the process has stopped.
void stop(const ChildProcess& process) {
    process.kill(SIGSTOP);
    int status = 0;
    if (waitpid(process.pid(), &status, WUNTRACED) != process.pid() || !WIFSTOPPED(status)) {
        throw std::runtime_error("the process does not stop");
    }
}

}  // namespace

Machine::Machine(Words managerOptions) : mManagerOptions(std::move(managerOptions)) {
    setenv("VOXTREL_BINDER_SOCKET", path("binder").c_str(), 1);
    unsetenv("VOXTREL_LOG_LEVEL");
    startManager();
}

Machine::~Machine() = default;

void Machine::startManager() {
    Words words = {VOXTREL_SERVICEMANAGER_PROGRAM};
    words.insert(words.end(), mManagerOptions.begin(), mManagerOptions.end());
    mManager = std::make_unique<ChildProcess>(words, "");
    awaitListener(path("binder"), SOCK_SEQPACKET, "the service manager");
}

void Machine::stopManager() {
    stop(*mManager);
}

void Machine::continueManager() {
    mManager->kill(SIGCONT);
}

void Machine::killManager() {
    kill(mManager);
}

void Machine::startService(const Words& options) {
    Words words = {VOXTREL_SERVICE_PROGRAM, "--profile", path("voxtrel.ini")};
    if (std::find(options.begin(), options.end(), "--sink") == options.end()) {
        words.insert(words.end(), {"--sink", "none"});
    }
    words.insert(words.end(), options.begin(), options.end());
    mService = std::make_unique<ChildProcess>(words, "");
    mLatest = mService.get();
}

void Machine::startOther(const Words& words) {
    mOther = std::make_unique<ChildProcess>(words, "");
    mLatest = mOther.get();
    if (!mOther->awaitOutput("service: clients find it now\n")) {
        throw std::runtime_error(mOther->finish().err);
    }
}

void Machine::shutDownService() {
    mService->kill(SIGTERM);
    EXPECT_EQ(mService->finish().status, 0);
}

void Machine::killService() {
    kill(mService);
}

void Machine::stopService() {
    stop(mService != nullptr ? *mService : *mOther);
}

void Machine::continueService() {
    (mService != nullptr ? *mService : *mOther).kill(SIGCONT);
}

std::size_t Machine::spokenFiles() const {
    std::error_code none;
    const std::filesystem::directory_iterator files(path("spoken"), none);
    return none ? 0 : static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

}  // namespace voxtrel_test
