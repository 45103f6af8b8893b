// SPDX-License-Identifier: Apache-2.0
#include "service/Preconditions.h"

#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace voxtreld {
namespace {

/// The runtime keeps 128 in reserve and refuses connections beyond; a client takes a few.
constexpr rlim_t kLeastDescriptors = 256;
constexpr rlim_t kWantedDescriptors = 65536;

std::string nameOf(std::filesystem::file_type type) {
    switch (type) {
        case std::filesystem::file_type::directory:
            return "a folder";
        case std::filesystem::file_type::fifo:
            return "a FIFO";
        case std::filesystem::file_type::socket:
            return "a socket";
        default:
            return "a device";
    }
}

}  // namespace

bool isUsableProfile(const std::string& path, std::string& error) {
    std::error_code ignored;  // what cannot be examined cannot be read either
    const std::filesystem::file_type type = std::filesystem::status(path, ignored).type();
    if (type == std::filesystem::file_type::none || type == std::filesystem::file_type::not_found ||
        type == std::filesystem::file_type::regular) {
        return true;
    }
    error = "the profile '" + path + "' is " + nameOf(type) +
            " and cannot keep settings: name a file with --profile";
    return false;
}

bool haveDescriptors(std::string& error) {
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return true;  // no limit is known
    }
    if (limit.rlim_cur < kWantedDescriptors) {
        limit.rlim_cur = std::min(limit.rlim_max, kWantedDescriptors);
        (void)setrlimit(RLIMIT_NOFILE, &limit);  // the old limit stays if this fails
        (void)getrlimit(RLIMIT_NOFILE, &limit);
    }
    if (limit.rlim_cur >= kLeastDescriptors) {
        return true;
    }
    error = "only " + std::to_string(limit.rlim_cur) +
            " files may be open, and serving clients takes " + std::to_string(kLeastDescriptors) +
            ": raise the limit (ulimit -n, LimitNOFILE=)";
    return false;
}

}  // namespace voxtreld
