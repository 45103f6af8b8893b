// SPDX-License-Identifier: Apache-2.0
#include "tools/Terminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace voxtrelctl {
namespace {

/// 0, or why not all of it could be written.
int writeAll(int descriptor, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
        if (written > 0) {
            done += static_cast<size_t>(written);
        } else if (written < 0 && errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

Terminal::Terminal(bool verbose)
    : mOutput(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)),
      mInteractive(isatty(STDOUT_FILENO) == 1),
      mErrorsInteractive(isatty(STDERR_FILENO) == 1) {
    const int elsewhere = verbose ? STDERR_FILENO : open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (elsewhere >= 0) {
        dup2(elsewhere, STDOUT_FILENO);
    }
    if (!verbose && elsewhere >= 0) {
        close(elsewhere);
    }
}

Terminal::~Terminal() {
    endProgress();
    if (mOutput >= 0) {
        close(mOutput);
    }
}

void Terminal::print(const std::string& text) {
    if (const int error = writeAll(mOutput, text); error != 0) {
        throw std::runtime_error("standard output: " + std::generic_category().message(error));
    }
}

void Terminal::line(const std::string& text) {
    print(text + "\n");
}

void Terminal::progress(const std::string& what, const std::string& passed) {
    if (mErrorsInteractive) {
        (void)writeAll(STDERR_FILENO, kEraseLine + what + " " + passed);
    } else if (what != mProgress) {
        (void)writeAll(STDERR_FILENO, "voxtrelctl: " + what + "\n");
    }
    mProgress = what;
}

void Terminal::endProgress() {
    if (!mProgress.empty() && mErrorsInteractive) {
        (void)writeAll(STDERR_FILENO, kEraseLine);
    }
    mProgress.clear();
}

}  // namespace voxtrelctl
