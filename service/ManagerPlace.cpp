// SPDX-License-Identifier: Apache-2.0
#include "service/ManagerPlace.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "service/Lifetime.h"

// Of the runtime for a PC; a device's has a driver.
#if __has_include(<binder/ServiceManagerSocket.h>)
#include <binder/BinderDriver.h>
#include <binder/ServiceManagerSocket.h>
#endif

namespace voxtreld {
namespace {

/// The socket or device through which the service manager is reached.
struct Place {
    const char* kind;
    mode_t type;
    std::string path;
    const char* remedy;
    bool mustExist;
};

Place driver(const std::string& path, bool mustExist) {
    return {"driver", S_IFCHR, path, "load the binder driver, and let this user open it",
            mustExist};
}

#if __has_include(<binder/ServiceManagerSocket.h>)

Place place() {
    const std::string& path = android::binderDriver();
    if (!path.empty()) {
        return driver(path, true);
    }
    return {"socket", S_IFSOCK, android::serviceManagerSocket(),
            "start voxtrel-servicemanager, or name its socket in VOXTREL_BINDER_SOCKET", true};
}

#else

// A device's runtime may use another driver, and reports itself what is missing.
Place place() {
    return driver("/dev/binder", false);
}

#endif

bool isUsable(std::string& error) {
    const Place used = place();
    struct stat status {};
    if (stat(used.path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) != used.type) {
        error = "the service manager cannot be reached: '" + used.path + "' is no " + used.kind +
                ": " + used.remedy;
        return false;
    }
    const int failure = access(used.path.c_str(), R_OK | W_OK) == 0 ? 0 : errno;
    if (failure == 0 || (failure == ENOENT && !used.mustExist)) {
        return true;
    }
    error = "the service manager cannot be reached: " + managerPlace() + ": " +
            std::system_category().message(failure) + ": " + used.remedy;
    return false;
}

}  // namespace

std::string managerPlace() {
    const Place used = place();
    return std::string("the ") + used.kind + " '" + used.path + "'";
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
