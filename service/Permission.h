// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_PERMISSION_H
#define VOXTREL_SERVICE_PERMISSION_H

#include <cstdint>

namespace voxtreld {

/// Permissions of a user, one bit each.
enum class Permission : uint8_t {
    Connect = 1,     ///< register, and read the settings
    Speak = 2,       ///< `say`, `silence`
    StopOthers = 4,  ///< stop and drop what other clients say
    Settings = 8,    ///< change what all clients share
    Lock = 16,       ///< keep other clients from speaking
    BreakLock = 32,  ///< free the lock of another client
};

/// A set of them.
using Permissions = uint8_t;

constexpr Permissions kNoPermissions = 0;
constexpr Permissions kAllPermissions = 63;

constexpr Permissions bitOf(Permission permission) {
    return static_cast<Permissions>(permission);
}

struct PermissionWord {
    const char* word;
    Permission permission;
};

/// As they are called in a policy file and in the log.
constexpr PermissionWord kPermissionWords[] = {
    {"connect", Permission::Connect},
    {"speak", Permission::Speak},
    {"stop-others", Permission::StopOthers},
    {"settings", Permission::Settings},
    {"lock", Permission::Lock},
    {"break-lock", Permission::BreakLock},
};

constexpr const char* wordOf(Permission permission) {
    for (const PermissionWord& entry : kPermissionWords) {
        if (entry.permission == permission) {
            return entry.word;
        }
    }
    return "";
}

}  // namespace voxtreld

#endif
