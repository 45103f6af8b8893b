// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_OTHERUSER_H
#define VOXTREL_TESTS_SUPPORT_OTHERUSER_H

#include <sys/types.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/TempFolder.h"

namespace voxtrel_test {

/// Only root can play another user; anybody else plays itself, and tests expect what it may then.
inline bool canBeOthers() {
    return geteuid() == 0;
}

/// A user that owns nothing: "nobody", where it can be played.
inline uid_t otherUser() {
    return canBeOthers() ? 65534 : geteuid();
}

/// The paths of our own shared libraries that a program loads.
inline std::vector<std::string> ownLibrariesOf(const std::string& program) {
    std::vector<std::string> found;
    FILE* const list = popen(("ldd '" + program + "'").c_str(), "r");
    if (list == nullptr) {
        throw std::runtime_error("ldd cannot be run");
    }
    char line[4096];
    while (std::fgets(line, sizeof line, list) != nullptr) {
        const std::string words = line;
        const size_t begin = words.find("=> /");
        if (words.find("libvoxtrel") != std::string::npos && begin != std::string::npos) {
            found.push_back(words.substr(begin + 3, words.find(" (", begin) - begin - 3));
        }
    }
    pclose(list);
    return found;
}

/// A folder with a copy of the program and of the libraries of ours that it needs. The tree may lie
/// where nobody but its owner may go.
inline std::string folderForOthers(const std::string& program) {
    namespace fs = std::filesystem;
    static const TempFolder folder;
    fs::permissions(folder.path(""), fs::perms(0755));
    std::vector<std::string> files = ownLibrariesOf(program);
    files.push_back(program);
    for (const std::string& file : files) {
        const fs::path copy = folder.path(fs::path(file).filename());
        fs::copy_file(file, copy, fs::copy_options::skip_existing);
        fs::permissions(copy, fs::perms(0755));
    }
    return folder.path("");
}

/// The command that runs `words` as that user, with no group but one of the same number.
inline std::vector<std::string> asUser(uid_t user, const std::vector<std::string>& words) {
    if (user == geteuid()) {
        return words;
    }
    const std::string number = std::to_string(user);
    const std::string folder = folderForOthers(words.front());
    std::vector<std::string> command = {
        "/usr/bin/env",
        "LD_LIBRARY_PATH=" + folder,
        "setpriv",
        "--reuid=" + number,
        "--regid=" + number,
        "--clear-groups",
        folder + "/" + std::filesystem::path(words.front()).filename().string()};
    command.insert(command.end(), words.begin() + 1, words.end());
    return command;
}

}  // namespace voxtrel_test

#endif
