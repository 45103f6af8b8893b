// SPDX-License-Identifier: Apache-2.0
#include "tools/Owner.h"

#include <pwd.h>

#include "tools/Text.h"

namespace voxtrelctl {
namespace {

constexpr std::uint32_t kHighest = UINT32_MAX - 1;

std::optional<std::uint32_t> findUser(const std::string& text) {
    if (const auto number = numberIn<std::uint32_t>(text); number && *number <= kHighest) {
        return number;
    }
    const passwd* found = getpwnam(text.c_str());  // NOLINT(concurrency-mt-unsafe): one thread
    return found != nullptr ? std::optional<std::uint32_t>(found->pw_uid) : std::nullopt;
}

}  // namespace

std::vector<std::uint32_t> trustedUsers(const Options& options) {
    if (!options.trustedOwner) {
        return {};
    }
    const std::optional<std::uint32_t> user = findUser(*options.trustedOwner);
    if (!user) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      "there is no user \"" + *options.trustedOwner + "\"",
                      "give --trust-owner the name or number of one");
    }
    return {*user};
}

std::string ownerName(std::uint32_t user) {
    std::vector<char> memory(16384);
    passwd entry = {};
    passwd* found = nullptr;
    (void)getpwuid_r(user, &entry, memory.data(), memory.size(), &found);
    const std::string number = std::to_string(user);
    return "user " + (found != nullptr ? found->pw_name + (" (" + number + ")") : number);
}

Problem untrustedOwner(std::optional<std::uint32_t> owner) {
    if (!owner) {
        return {TTS::STATUS_NO_SERVICE, "the service manager does not tell whose it is",
                "voxtrel-servicemanager is older than voxtrelctl: start it again"};
    }
    return {TTS::STATUS_PERMISSION_DENIED,
            "the service is that of " + ownerName(*owner) +
                ", who could read what is said, and was not asked for anything",
            "if you trust that user, name it with --trust-owner"};
}

}  // namespace voxtrelctl
