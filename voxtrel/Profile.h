// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILE_H
#define VOXTREL_PROFILE_H

#include <cstdint>
#include <set>
#include <string>

#include "voxtrel/Result.h"
#include "voxtrel/Settings.h"

namespace voxtrel {

/// A profile of settings, and its file (docs/profile-format.md). A plain value. Called on: any one
/// thread. Nothing is printed.
struct Profile {
    /// Those that the profile sets. It cannot hold a `rate`.
    GlobalSettings settings = {};

    std::set<Switch> switchedOff = {};

    // What a device's service may find there about its output; read, never written.
    std::int32_t sampleRate = 0;  ///< Hz
    std::int32_t channels = 0;
    std::int32_t mixerPath = 0;
    std::int32_t longBreakDuration = 0;
    std::int32_t shortBreakDuration = 0;

    /// @return "/Customer/" + `name` + ".ini".
    static std::string pathOf(const std::string& name);

    /// Reads a file, and changes nothing there.
    /// @return ProfileError with the system's reason.
    static Result<Profile> read(const std::string& path);

    /// Puts the profile in place of the file, whole or not at all. Volume and pitch become whole
    /// numbers, which the format has.
    /// @return ProfileError with the system's reason; BadParameter for what a profile cannot hold.
    Result<void> write(const std::string& path) const;
};

}  // namespace voxtrel

#endif
