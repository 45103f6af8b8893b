// SPDX-License-Identifier: Apache-2.0
#include "servicemanager/Accounts.h"

#include <grp.h>
#include <pwd.h>

#include <cstdint>
#include <cstdlib>

namespace servicemanager {
namespace {

/// The highest number means "none" to the kernel.
constexpr unsigned long long kHighest = UINT32_MAX - 1ULL;

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool readNumber(const std::string& text, uint32_t& number) {
    const unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
    number = value <= kHighest ? static_cast<uint32_t>(value) : number;
    return value <= kHighest;
}

}  // namespace

bool findUser(const std::string& text, uid_t& user) {
    if (isNumber(text)) {
        return readNumber(text, user);
    }
    const passwd* found = getpwnam(text.c_str());  // NOLINT(concurrency-mt-unsafe): one thread
    user = found != nullptr ? found->pw_uid : user;
    return found != nullptr;
}

bool findGroup(const std::string& text, gid_t& group) {
    if (isNumber(text)) {
        return readNumber(text, group);
    }
    const struct group* found = getgrnam(text.c_str());  // NOLINT(concurrency-mt-unsafe)
    group = found != nullptr ? found->gr_gid : group;
    return found != nullptr;
}

}  // namespace servicemanager
