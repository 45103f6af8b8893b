// SPDX-License-Identifier: Apache-2.0
#include "tools/Owner.h"

#ifdef VOXTREL_CAN_SPAWN
#include <pwd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include <binder/ServiceOwner.h>

#include "client/TTSClientPrivate.h"
#endif

namespace voxtrelctl {

#ifdef VOXTREL_CAN_SPAWN

namespace {

constexpr uid_t kRoot = 0;
constexpr unsigned long long kHighest = UINT32_MAX - 1ULL;

std::optional<uid_t> gTrusted;

std::optional<uid_t> findUser(const std::string& text) {
    if (!text.empty() && text.find_first_not_of("0123456789") == std::string::npos) {
        const unsigned long long number = std::strtoull(text.c_str(), nullptr, 10);
        return number <= kHighest ? std::optional(static_cast<uid_t>(number)) : std::nullopt;
    }
    const passwd* found = getpwnam(text.c_str());  // NOLINT(concurrency-mt-unsafe): one thread
    return found != nullptr ? std::optional(found->pw_uid) : std::nullopt;
}

bool isTrusted(uid_t owner) {
    return owner == getuid() || owner == kRoot || owner == gTrusted;
}

std::string nameOf(uid_t user) {
    std::vector<char> memory(16384);
    passwd entry = {};
    passwd* found = nullptr;
    (void)getpwuid_r(user, &entry, memory.data(), memory.size(), &found);
    const std::string number = std::to_string(user);
    return "user " + (found != nullptr ? found->pw_name + (" (" + number + ")") : number);
}

}  // namespace

void trustOwner(const std::string& user) {
    gTrusted = findUser(user);
    if (!gTrusted.has_value()) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, "there is no user \"" + user + "\"",
                      "give --trust-owner the name or number of one");
    }
}

std::optional<Owner> ownerOf(const android::sp<android::IBinder>& service) {
    android::OwnedService found;
    const android::status_t status =
        android::findOwnedService(TTS::ITextToSpeechFestival::descriptor, found);
    if (status != android::OK && status != android::DEAD_OBJECT) {
        throw Failure(TTS::STATUS_NO_SERVICE, "the service manager does not tell whose it is",
                      "voxtrel-servicemanager is older than voxtrelctl: start it again");
    }
    if (status != android::OK || found.service != service) {
        throw Failure(TTS::STATUS_NO_SERVICE, "it went away while it was asked whose it is",
                      "start voxtreld again and repeat the command");
    }
    return Owner{nameOf(found.owner), isTrusted(found.owner)};
}

#else

void trustOwner(const std::string& /*user*/) {}

std::optional<Owner> ownerOf(const android::sp<android::IBinder>& /*service*/) {
    return std::nullopt;
}

#endif

std::optional<Failure> doubtAbout(const android::sp<android::IBinder>& service) {
    try {
        const std::optional<Owner> owner = ownerOf(service);
        if (!owner.has_value() || owner->isTrusted) {
            return std::nullopt;
        }
        return Failure(TTS::STATUS_PERMISSION_DENIED,
                       "the service is that of " + owner->name +
                           ", who could read what is said, and was not asked for anything",
                       "if you trust that user, name it with --trust-owner");
    } catch (const Failure& failure) {
        return failure;
    }
}

}  // namespace voxtrelctl
