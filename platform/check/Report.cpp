// SPDX-License-Identifier: Apache-2.0
#include "check/Report.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace check {

Report::Report(const char* descriptor)
    : mDescriptor(static_cast<int>(std::strtol(descriptor, nullptr, 10))) {
    (void)fcntl(mDescriptor, F_SETFD, FD_CLOEXEC);  // programs that it starts must not keep it open
}

bool Report::writeLine(std::string line) const {
    std::replace(line.begin(), line.end(), '\n', ' ');
    line += '\n';
    return write(mDescriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

}  // namespace check
