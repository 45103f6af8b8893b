// SPDX-License-Identifier: Apache-2.0
#include "service/UserProfile.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace voxtreld {
namespace {

std::string fullPath(const char* variable) {
    const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): read only
    return value != nullptr && value[0] == '/' ? value : "";
}

std::string homeFolder() {
    const std::string named = fullPath("HOME");
    const passwd* user = getpwuid(geteuid());  // NOLINT(concurrency-mt-unsafe): called once
    return !named.empty() || user == nullptr ? named : user->pw_dir;
}

std::string stateFolder() {
    const std::string named = fullPath("XDG_STATE_HOME");
    const std::string home = homeFolder();
    return !named.empty() || home.empty() ? named : home + "/.local/state";
}

/// The folder and those above it that are missing.
bool makeFolders(const std::string& folder) {
    for (size_t end = folder.find('/', 1); end != std::string::npos;
         end = folder.find('/', end + 1)) {
        // An error shows when the last one is used.
        (void)mkdir(folder.substr(0, end).c_str(), 0700);
    }
    if (mkdir(folder.c_str(), 0700) == 0) {
        return true;
    }
    struct stat status {};
    if (errno != EEXIST || stat(folder.c_str(), &status) != 0) {
        return false;
    }
    errno = ENOTDIR;
    return S_ISDIR(status.st_mode);
}

}  // namespace

std::string userProfile(std::string& error) {
    const std::string state = stateFolder();
    if (state.empty()) {
        error =
            "this user has no home folder for the settings: set XDG_STATE_HOME, or name a file "
            "with --profile";
        return "";
    }
    const std::string folder = state + "/voxtrel";
    if (!makeFolders(folder)) {
        error = "cannot make " + folder + " for the settings: " + strerrordesc_np(errno) +
                ": set XDG_STATE_HOME, or name a file with --profile";
        return "";
    }
    return folder + "/voxtrel.ini";
}

}  // namespace voxtreld
