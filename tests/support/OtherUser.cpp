// SPDX-License-Identifier: Apache-2.0
#include "tests/support/OtherUser.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "tests/support/TempFolder.h"

namespace fs = std::filesystem;

namespace voxtrel_test {
namespace {

/// The paths of our own shared libraries that a program loads.
std::vector<fs::path> ownLibrariesOf(const fs::path& program) {
    std::vector<fs::path> found;
    FILE* const list = popen(("ldd '" + program.string() + "'").c_str(), "r");
    if (list == nullptr) {
        throw std::runtime_error("ldd cannot be run");
    }
    char line[4096];
    while (std::fgets(line, sizeof line, list) != nullptr) {
        const std::string words = line;
        const size_t begin = words.find("=> /");
        if (words.find("libvoxtrel") != std::string::npos && begin != std::string::npos) {
            found.emplace_back(words.substr(begin + 3, words.find(" (", begin) - begin - 3));
        }
    }
    pclose(list);
    return found;
}

/// A folder that everybody may enter, with copies of what another user runs and reads there. What
/// its processes report to a sanitizer is added to the reports of this run in the end.
class PublicFolder {
public:
    PublicFolder() { fs::permissions(mFolder.path(""), fs::perms(01777)); }
    ~PublicFolder() {
        std::error_code ignored;
        for (const fs::directory_entry& entry : fs::directory_iterator(mFolder.path(""), ignored)) {
            const std::string name = entry.path().filename();
            if (name.rfind(mReports.filename().string() + ".", 0) == 0) {
                fs::create_directories(mReports.parent_path(), ignored);
                fs::copy_file(entry.path(), mReports.parent_path() / (name + ".other-user"),
                              ignored);
            }
        }
    }
    PublicFolder(const PublicFolder&) = delete;
    PublicFolder& operator=(const PublicFolder&) = delete;

    std::string copyOf(const fs::path& file) {
        const fs::path copy = mFolder.path(file.filename());
        fs::copy_file(file, copy, fs::copy_options::skip_existing);
        fs::permissions(copy, fs::perms(0755));
        return copy;
    }

    /// `NAME=VALUE` of a sanitizer's options, with paths that another user may open.
    std::string openOptions(const std::string& name, const std::string& value) {
        std::string opened = name + "=";
        std::istringstream options(value);
        for (std::string option; std::getline(options, option, ':');) {
            const size_t equals = option.find('=') + 1;
            const std::string key = option.substr(0, equals);
            if (key == "log_path=") {
                mReports = option.substr(equals);
                option = key + mFolder.path(mReports.filename());
            } else if (key == "suppressions=") {
                option = key + copyOf(option.substr(equals));
            }
            opened += option + ":";
        }
        return opened;
    }

    std::string path() const { return mFolder.path(""); }

private:
    const TempFolder mFolder;
    fs::path mReports;
};

}  // namespace

bool canBeOthers() {
    return geteuid() == 0;
}

uid_t otherUser() {
    return canBeOthers() ? 65534 : geteuid();
}

std::vector<std::string> asUser(uid_t user, const std::vector<std::string>& words) {
    if (user == geteuid()) {
        return words;
    }
    static PublicFolder folder;
    std::vector<std::string> command = {"/usr/bin/env", "LD_LIBRARY_PATH=" + folder.path()};
    for (const char* name : {"ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (const char* const value = std::getenv(name)) {
            command.push_back(folder.openOptions(name, value));
        }
    }
    for (const fs::path& library : ownLibrariesOf(words.front())) {
        folder.copyOf(library);
    }
    const std::string number = std::to_string(user);
    command.insert(command.end(), {"setpriv", "--reuid=" + number, "--regid=" + number,
                                   "--clear-groups", folder.copyOf(words.front())});
    command.insert(command.end(), words.begin() + 1, words.end());
    return command;
}

}  // namespace voxtrel_test
