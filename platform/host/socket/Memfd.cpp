// SPDX-License-Identifier: Apache-2.0
#include "socket/Memfd.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "socket/Syscalls.h"

namespace android::transport {

namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

}  // namespace

Fd sealedCopy(const uint8_t* bytes, size_t size) {
    Fd memfd(sys::makeMemfd());
    size_t done = 0;
    while (memfd.valid() && done < size) {
        const ssize_t written = sys::write(memfd.get(), bytes + done, size - done);
        if (written > 0) {
            done += static_cast<size_t>(written);
        } else if (errno != EINTR) {
            return Fd();
        }
    }
    if (!memfd.valid() || fcntl(memfd.get(), F_ADD_SEALS, kSeals | F_SEAL_SEAL) != 0) {
        return Fd();
    }
    return memfd;
}

bool isSealed(const Fd& fd, size_t size) {
    const int seals = fcntl(fd.get(), F_GET_SEALS);
    struct stat status {};
    return seals >= 0 && (seals & kSeals) == kSeals && fstat(fd.get(), &status) == 0 &&
           status.st_size >= 0 && static_cast<uint64_t>(status.st_size) == size;
}

bool readSealed(const Fd& memfd, uint8_t* out, size_t size) {
    errno = 0;
    size_t done = 0;
    while (done < size) {
        const ssize_t got =
            sys::read(memfd.get(), out + done, size - done, static_cast<off_t>(done));
        if (got > 0) {
            done += static_cast<size_t>(got);
        } else if (got == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace android::transport
