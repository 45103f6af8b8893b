// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/ProfileFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "profile/internal/File.h"
#include "profile/internal/ProfileReader.h"
#include "profile/internal/ProfileWriter.h"

namespace voxtrel {
namespace {

constexpr mode_t kMode = 0666;  // less the process's mask

Error failure(const char* verb, const std::string& path, int error) {
    return {Status::ProfileError, std::string("the profile '") + path + "' cannot be " + verb +
                                      ": " + std::generic_category().message(error)};
}

/// 0 if the path names a file or nothing, else why not: only these can be replaced.
int checkReplaceable(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? 0 : errno;
    }
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    return S_ISREG(status.st_mode) ? 0 : EINVAL;
}

/// What a symbolic link leads to, so that the link stays.
std::string targetOf(const std::string& path) {
    char* const resolved = realpath(path.c_str(), nullptr);
    std::string target = resolved != nullptr ? resolved : path;
    std::free(resolved);
    return target;
}

int writeAll(int file, const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const ssize_t written = write(file, text.data() + at, text.size() - at);
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        at += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    return fsync(file) == 0 ? 0 : errno;
}

/// Makes a file beside `path` that is nobody else's, whatever lies there. -1, and errno, if that
/// cannot be.
int makeBeside(const std::string& path, std::string& name) {
    constexpr int kMaxTries = 1000;  // a process of this number may have died and left some
    static std::atomic<unsigned> made{0};
    int file = -1;
    for (int tries = 0; tries < kMaxTries; ++tries) {
        name = path + "." + std::to_string(getpid()) + "-" + std::to_string(made++) + ".new";
        file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        if (file >= 0 || errno != EEXIST) {
            break;
        }
    }
    return file;
}

/// 0, or why not all of it is on the disk; then there is no such file.
int writeBeside(const std::string& path, const std::string& text, std::string& name) {
    const int file = makeBeside(path, name);
    if (file < 0) {
        return errno;
    }
    int error = writeAll(file, text);
    if (close(file) != 0 && error == 0) {
        error = errno;
    }
    if (error != 0) {
        (void)unlink(name.c_str());
    }
    return error;
}

/// 0, or why not all of it could be read.
int readAll(const TTS::File& file, TTS::ProfileReader& reader) {
    char piece[4096];
    ssize_t size = 0;
    while ((size = file.read(piece, sizeof piece)) > 0) {
        reader.take(piece, static_cast<std::size_t>(size));
    }
    if (size < 0) {
        return errno;
    }
    reader.finish();
    return 0;
}

}  // namespace

Result<void> replaceProfile(const std::string& path, const TTS::TtsSetting& setting) {
    int error = checkReplaceable(path);
    const std::string target = targetOf(path);
    std::string next;
    if (error == 0) {
        error = writeBeside(target, TTS::profileText(setting), next);
    }
    if (error == 0 && std::rename(next.c_str(), target.c_str()) != 0) {
        error = errno;
        (void)unlink(next.c_str());
    }
    if (error != 0) {
        return failure("written", path, error);
    }
    return {};
}

Result<TTS::TtsSetting> readProfile(const std::string& path) {
    // A FIFO would hold the caller up, and a folder reads as an empty profile.
    if (const int error = checkReplaceable(path); error != 0) {
        return failure("read", path, error);
    }
    const TTS::File file(path, O_RDONLY);
    if (!file.isOpen()) {
        return failure("read", path, errno);
    }
    TTS::TtsSetting setting("");
    TTS::ProfileReader reader(setting);
    if (const int error = readAll(file, reader); error != 0) {
        return failure("read", path, error);
    }
    return setting;
}

TTS::TtsSetting rereadProfile(const TTS::TtsSetting& setting) {
    const std::string text = TTS::profileText(setting);
    TTS::TtsSetting read("");
    TTS::ProfileReader reader(read);
    reader.take(text.data(), text.size());
    reader.finish();
    return read;
}

}  // namespace voxtrel
