// SPDX-License-Identifier: Apache-2.0
#include "socket/SocketPath.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "binder/ServiceManagerSocket.h"

namespace android::transport {

namespace {

constexpr mode_t kOwnerOnly = 0700;

const char* environment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read only
    return value != nullptr && *value != '\0' ? value : nullptr;
}

std::string sharedFallback() {
    return "/tmp/voxtrel-" + std::to_string(geteuid()) + "/binder";
}

}  // namespace

std::string folderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

void makeFolderOf(const std::string& path) {
    // A failure shows when the socket is bound.
    (void)mkdir(folderOf(path).c_str(), kOwnerOnly);
}

bool folderIsTrusted(const std::string& path) {
    return path != sharedFallback() || isPrivateTo(geteuid(), folderOf(path));
}

bool isPrivateTo(uid_t user, const std::string& folder) {
    struct stat status {};
    return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == user && (status.st_mode & 0777) == kOwnerOnly;
}

}  // namespace android::transport

namespace android {

std::string serviceManagerSocket() {
    if (const char* chosen = transport::environment("VOXTREL_BINDER_SOCKET")) {
        return chosen;
    }
    if (const char* runtime = transport::environment("XDG_RUNTIME_DIR")) {
        return std::string(runtime) + "/voxtrel/binder";
    }
    return transport::sharedFallback();
}

bool makeServiceManagerFolder() {
    const std::string path = serviceManagerSocket();
    transport::makeFolderOf(path);
    return transport::folderIsTrusted(path);
}

}  // namespace android
