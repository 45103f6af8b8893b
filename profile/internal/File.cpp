// SPDX-License-Identifier: Apache-2.0
#include "profile/internal/File.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace TTS {
namespace {

constexpr mode_t kMode = 0666;  // less the process's mask

}  // namespace

File::File(const std::string& name, int flags)
    : mDescriptor(open(name.c_str(), flags | O_CLOEXEC | O_LARGEFILE, kMode)) {}

File::~File() {
    if (isOpen()) {
        (void)::close(mDescriptor);  // there is nothing to do about a failure
    }
}

ssize_t File::read(char* out, size_t size) const {
    ssize_t count = 0;
    do {
        count = ::read(mDescriptor, out, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

bool File::write(const char* bytes, size_t size) const {
    while (size > 0) {
        const ssize_t count = ::write(mDescriptor, bytes, size);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        const auto written = static_cast<size_t>(count > 0 ? count : 0);
        bytes += written;
        size -= written;
    }
    return true;
}

}  // namespace TTS
