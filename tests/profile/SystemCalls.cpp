// SPDX-License-Identifier: Apache-2.0
#include "tests/profile/SystemCalls.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "tests/support/TempFolder.h"

namespace voxtrel_test {
namespace {

namespace fs = std::filesystem;

SystemCalls* gRecorder = nullptr;

std::vector<int> openFlagsOf(const std::string& file) {
    std::vector<int> flags;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;  // the iterator's own descriptor
        if (fs::read_symlink(entry.path(), gone) == file) {
            flags.push_back(fcntl(std::stoi(entry.path().filename()), F_GETFL));
        }
    }
    return flags;
}

}  // namespace

SystemCalls::SystemCalls(std::string watched, int commandResult)
    : mWatched(std::move(watched)), mCommandResult(commandResult) {
    gRecorder = this;
}

SystemCalls::~SystemCalls() {
    gRecorder = nullptr;
}

int SystemCalls::noteCommand(const char* text) {
    const std::vector<int> flags =
        openFlagsOf(mWatched);  // before the file is opened once more to be read
    commands.push_back({text, readFile(mWatched), flags});
    return mCommandResult;
}

ssize_t SystemCalls::allow(int descriptor, size_t size) {
    std::error_code gone;
    if (fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), gone) != mWatched) {
        return static_cast<ssize_t>(size);
    }
    mWasInterrupted = manners.interrupted && !mWasInterrupted;
    if (mWasInterrupted || manners.before == 0) {
        errno = mWasInterrupted ? EINTR : EIO;
        return -1;
    }
    size = std::min({size, manners.most, manners.before});
    manners.before -= size;
    return static_cast<ssize_t>(size);
}

}  // namespace voxtrel_test

extern "C" {

int system(const char* command) {
    using voxtrel_test::gRecorder;
    return gRecorder != nullptr ? gRecorder->noteCommand(command) : 0;
}

ssize_t read(int descriptor, void* data, size_t size) {
    using voxtrel_test::gRecorder;
    const auto allowed =
        gRecorder != nullptr ? gRecorder->allow(descriptor, size) : static_cast<ssize_t>(size);
    return allowed < 0 ? allowed : syscall(SYS_read, descriptor, data, allowed);
}

ssize_t write(int descriptor, const void* data, size_t size) {
    using voxtrel_test::gRecorder;
    auto allowed = static_cast<ssize_t>(size);
    if (gRecorder != nullptr) {
        gRecorder->writes.emplace_back(static_cast<const char*>(data), size);
        allowed = gRecorder->allow(descriptor, size);
    }
    return allowed < 0 ? allowed : syscall(SYS_write, descriptor, data, allowed);
}

ssize_t writev(int descriptor, const iovec* parts, int count) {
    if (voxtrel_test::gRecorder != nullptr) {
        std::string all;
        for (int i = 0; i < count; ++i) {
            all.append(static_cast<const char*>(parts[i].iov_base), parts[i].iov_len);
        }
        voxtrel_test::gRecorder->writes.push_back(all);
    }
    return syscall(SYS_writev, descriptor, parts, count);
}

}  // extern "C"
