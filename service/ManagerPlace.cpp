// SPDX-License-Identifier: Apache-2.0
#include "service/ManagerPlace.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "service/Lifetime.h"

// Of the runtime for a PC; a device's has a driver.
#if __has_include(<binder/ServiceManagerSocket.h>)
#include <binder/ServiceManagerSocket.h>
#endif

namespace voxtreld {
namespace {

#if __has_include(<binder/ServiceManagerSocket.h>)

constexpr const char* kKind = "socket";
constexpr mode_t kType = S_IFSOCK;
constexpr const char* kRemedy =
    "start voxtrel-servicemanager, or name its socket in VOXTREL_BINDER_SOCKET";

std::string placePath() {
    return android::serviceManagerSocket();
}

#else

constexpr const char* kKind = "driver";
constexpr mode_t kType = S_IFCHR;
constexpr const char* kRemedy = "load the binder driver, and let this user open it";

std::string placePath() {
    return "/dev/binder";
}

#endif

bool isUsable(std::string& error) {
    const std::string path = placePath();
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) != kType) {
        error =
            "the service manager cannot be reached: '" + path + "' is no " + kKind + ": " + kRemedy;
        return false;
    }
    if (access(path.c_str(), R_OK | W_OK) != 0) {
        error = "the service manager cannot be reached: " + managerPlace() + ": " +
                std::system_category().message(errno) + ": " + kRemedy;
        return false;
    }
    return true;
}

}  // namespace

std::string managerPlace() {
    return std::string("the ") + kKind + " '" + placePath() + "'";
}

bool isManagerPlaceUsable(const sigset_t& signals, std::string& error) {
    constexpr std::chrono::milliseconds kPause(10);
    const auto deadline = std::chrono::steady_clock::now() + kManagerTimeout;
    while (!isUsable(error)) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        error.clear();
        if (signalComesWithin(signals, kPause)) {
            return false;
        }
    }
    return true;
}

}  // namespace voxtreld
