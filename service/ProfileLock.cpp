// SPDX-License-Identifier: Apache-2.0
#include "service/ProfileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <system_error>

namespace voxtreld {
namespace {

/// Neither blocks on a FIFO nor follows a symbolic link. -1, with errno, on failure.
int openLock(const std::string& path) {
    const int file =
        open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    struct stat status {};
    if (file >= 0 && (fstat(file, &status) != 0 || !S_ISREG(status.st_mode))) {
        close(file);
        errno = EINVAL;
        return -1;
    }
    return file;
}

bool signalComesWithin(const sigset_t& signals, std::chrono::milliseconds time) {
    const timespec limit = {0, static_cast<long>(std::chrono::nanoseconds(time).count())};
    return sigtimedwait(&signals, nullptr, &limit) > 0;
}

}  // namespace

ProfileLock lockProfile(const std::string& profile, const sigset_t& signals,
                        std::chrono::milliseconds timeout, const Log& log) {
    constexpr std::chrono::milliseconds kPause(20);
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    const std::string path = profile + ".lock";
    // Never closed: the runtime's threads may still change a setting when main() has returned.
    const int file = openLock(path);
    while (file < 0 || flock(file, LOCK_EX | LOCK_NB) != 0) {
        if (file < 0 || errno != EWOULDBLOCK) {
            log(LogLevel::Warning,
                "another voxtreld on this profile would not be noticed: cannot lock '" + path +
                    "': " + std::system_category().message(errno) +
                    "; make that possible, or name another --profile");
            return ProfileLock::Ours;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            close(file);
            return ProfileLock::OfAnother;
        }
        if (signalComesWithin(signals, kPause)) {
            close(file);
            return ProfileLock::Interrupted;
        }
    }
    return ProfileLock::Ours;
}

}  // namespace voxtreld
