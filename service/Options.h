// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_OPTIONS_H
#define VOXTREL_SERVICE_OPTIONS_H

#include <chrono>
#include <optional>
#include <string>

#include "profile/TtsSetting.h"
#include "service/ClientRegistry.h"
#include "service/SpeechQueue.h"

namespace voxtreld {

/// The values of the command line.
struct Options {
    std::string profile = TTS::TtsSetting::defaultPath("voxtrel");
    bool userProfile = false;  ///< in the place of `profile`, that of `userProfile()`
    std::string sink = "alsa";
    std::string background;  ///< empty: none
    bool realTime = false;
    std::optional<std::string> policy;  ///< without it the default file
    QueueLimits limits;
    size_t maxClients = ClientRegistry::kMaxClients;
    std::chrono::seconds idleLimit{0};  ///< 0: stay
    std::optional<int> logLevel;        ///< of `LogLevel`
};

/// Reads the command line. Help, version and complaints are printed here.
/// @return true to go on; else `exitStatus` says how to leave.
bool parseOptions(int argc, char** argv, Options& options, int& exitStatus);

}  // namespace voxtreld

#endif
