// SPDX-License-Identifier: Apache-2.0
#include "tests/house/include_rule.h"

#include <algorithm>
#include <regex>

namespace house {
namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool isGuarded(const std::string& target) {
    static const std::vector<std::string> folders = {
        "vocabulary/", "ipc/",     "profile/", "client/",    "voxtrel/",
        "platform/",   "service/", "tools/",   "examples/",  "tests/",
        "bridges/",    "bench/",   "fuzz/",    "ttscommon/", "binder/",
        "utils/",      "socket/",  "kernel/",  "support/",   "servicemanager/",
        "check/"};
    return std::any_of(folders.begin(), folders.end(),
                       [&](const std::string& folder) { return startsWith(target, folder); });
}

bool isPlatform(const std::string& target) {
    return startsWith(target, "binder/") || startsWith(target, "utils/");
}

/// Private headers of another room, but for those that are a door of their own.
bool isForeignInternal(const Room& room, const std::string& target) {
    const bool isOwn =
        startsWith(target, std::string(room.folder) + "/") ||
        (room.folder == std::string("platform/host") && startsWith(target, "binder/"));
    return target.find("/internal/") != std::string::npos && !isOwn &&
           std::count(room.doors.begin(), room.doors.end(), target) == 0;
}

/// Transports do not know each other, and the classes of the public API know neither.
bool isForeignTransport(const std::string& path, const std::string& target) {
    const std::string host = "platform/host/";
    if (!startsWith(path, host) || path == host + "Runtime.cpp" ||
        startsWith(path, host + "servicemanager/")) {
        return false;
    }
    const auto isOther = [&](const std::string& folder) {
        return startsWith(target, folder) && !startsWith(path, host + folder);
    };
    return isOther("socket/") || isOther("kernel/");
}

bool isLibrary(const std::string& folder) {
    return folder == "vocabulary" || folder == "ipc" || folder == "profile" || folder == "client";
}

}  // namespace

const std::vector<Room>& rooms() {
    static const std::vector<Room> all = {
        {"vocabulary", {"vocabulary/"}},
        {"ipc", {"ipc/", "vocabulary/", "binder/", "utils/"}},
        {"profile", {"profile/", "vocabulary/"}},
        {"client", {"client/", "profile/", "ipc/", "vocabulary/", "ttscommon/"}},
        {"voxtrel",
         {"voxtrel/", "client/", "profile/", "ipc/", "vocabulary/", "binder/", "utils/",
          // Of which it compiles the sources in once more.
          "client/internal/FilterText.h", "profile/internal/File.h",
          "profile/internal/ProfileReader.h", "profile/internal/ProfileWriter.h"}},
        {"platform/host",
         {"binder/", "utils/", "ttscommon/", "socket/", "kernel/", "support/", "servicemanager/"}},
        {"platform/check", {"check/", "binder/", "utils/", "ttscommon/"}},
        {"service",
         {"service/", "vocabulary/", "ipc/", "profile/", "binder/", "utils/", "ttscommon/"}},
        // The one that starts a service manager must know where it will listen.
        {"tools", {"tools/", "voxtrel/", "vocabulary/", "binder/ServiceManagerSocket.h"}},
        {"bridges", {"bridges/", "voxtrel/voxtrel.h"}},
        {"examples",
         {"voxtrel/", "client/", "ipc/", "profile/", "vocabulary/", "binder/", "utils/"}},
        // It stands for somebody else's runtime.
        {"tests/foreign_peer/peer", {"tests/foreign_peer/peer/"}},
    };
    return all;
}

namespace {

std::vector<std::string> targetsIn(const std::string& source, const std::regex& directive) {
    std::vector<std::string> targets;
    for (std::sregex_iterator it(source.begin(), source.end(), directive), end; it != end; ++it) {
        targets.push_back((*it)[1]);
    }
    return targets;
}

}  // namespace

std::vector<std::string> includesOf(const std::string& source) {
    static const std::regex directive(R"re((?:^|\n)[ \t]*#[ \t]*include[ \t]*["<]([^">]+)[">])re");
    return targetsIn(source, directive);
}

std::vector<std::string> quotedIncludesOf(const std::string& source) {
    static const std::regex directive(R"re((?:^|\n)[ \t]*#[ \t]*include[ \t]*"([^"]+)")re");
    return targetsIn(source, directive);
}

bool mayInclude(const Room& room, const std::string& path, const std::string& target) {
    if (target.find("..") != std::string::npos || isForeignInternal(room, target) ||
        isForeignTransport(path, target)) {
        return false;
    }
    if (isLibrary(room.folder) && isPlatform(target)) {
        return path == "ipc/BinderHeaders.h";
    }
    return !isGuarded(target) ||
           std::any_of(room.doors.begin(), room.doors.end(),
                       [&](const std::string& door) { return startsWith(target, door); });
}

}  // namespace house
