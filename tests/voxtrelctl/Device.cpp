// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrelctl/Device.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tests/support/Eventually.h"

namespace voxtrel_test {
namespace {

bool listens(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    const int probe = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    const bool connected =
        connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(probe);
    return connected;
}

bool hasSink(const ChildProcess::Words& options) {
    for (const std::string& option : options) {
        if (option == "--sink") {
            return true;
        }
    }
    return false;
}

}  // namespace

Device::Device(const Words& managerOptions) {
    const std::string socket = path("binder");
    setenv("VOXTREL_BINDER_SOCKET", socket.c_str(), 1);
    unsetenv("VOXTREL_LOG_LEVEL");
    unsetenv("VOXTREL_LANGUAGE_WITH_VOICES");
    Words words = {VOXTREL_SERVICEMANAGER_PROGRAM};
    words.insert(words.end(), managerOptions.begin(), managerOptions.end());
    mManager = std::make_unique<ChildProcess>(words, "");
    if (!eventually([&] { return listens(socket); })) {
        throw std::runtime_error("the service manager does not listen");
    }
}

Device::~Device() {
    mService.reset();
    mManager.reset();
}

void Device::startService(const Words& options) {
    Words words = {VOXTREL_SERVICE_PROGRAM, "--profile", path("voxtrel.ini")};
    if (!hasSink(options)) {
        words.insert(words.end(), {"--sink", "wav:" + wavPath()});
    }
    words.insert(words.end(), options.begin(), options.end());
    mService = std::make_unique<ChildProcess>(words, "");
    // A client connects when the service is ready, and not before. A refused one
    // has waited too.
    const Outcome ready = ctl({"languages"});
    if (ready.status != 0 && ready.err.find("-10") == std::string::npos) {
        mService->kill(SIGTERM);
        throw std::runtime_error(ready.err + mService->finish().err);
    }
}

void Device::startOther(const Words& words) {
    mService = std::make_unique<ChildProcess>(words, "");
    if (!mService->awaitOutput("service: clients find it now\n")) {
        throw std::runtime_error(mService->finish().err);
    }
}

void Device::stopService() {
    mService->kill(SIGTERM);
    EXPECT_EQ(mService->finish().status, 0);
}

void Device::killService() {
    mService->kill(SIGKILL);
    EXPECT_EQ(mService->finish().status, 128 + SIGKILL);
}

void Device::killServiceManager() {
    mManager->kill(SIGKILL);
    EXPECT_EQ(mManager->finish().status, 128 + SIGKILL);
}

Outcome Device::ctl(const Words& arguments, const std::string& input) {
    Words words = {control()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return ChildProcess(words, input).finish();
}

std::unique_ptr<ChildProcess> Device::start(const Words& arguments) {
    Words words = {control()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return std::make_unique<ChildProcess>(words, "");
}

std::string Device::control() {
    return VOXTREL_CONTROL_PROGRAM;
}

std::string settingOf(Device& device, const std::string& name) {
    const Outcome got = device.ctl({"get", "--json", name});
    EXPECT_EQ(got.status, 0) << got.err;
    const nlohmann::json value = nlohmann::json::parse(got.out)[name]["value"];
    return value.is_string() ? value.get<std::string>() : value.dump();
}

}  // namespace voxtrel_test
