// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_OPTIONS_H
#define VOXTREL_TOOLS_OPTIONS_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace voxtrelctl {

enum class Command {
    Help,  ///< `Options::helpText` is all there is to do
    Say,
    Silence,
    Stop,
    Lock,
    BreakLock,
    Status,
    Languages,
    Voices,
    Get,
    Set,
    Enable,
    Disable,
    ProfileShow,
    ProfileSave,
    ProfileLoad,
    ProfileCopy,
    ProfileRemove,
    Monitor,
    Doctor,
};

/// The client's own settings for one run of the program, as text: checked against the service's
/// ranges once connected.
struct Prosody {
    std::string language;
    std::string voice;                          ///< a number, or a name from `voices`
    std::map<std::string, std::string> values;  ///< by setting name: "speed", "pitch" and so on
    std::string profile;                        ///< read first; what the others say wins
};

/// What the command line asks for. Only the fields that the command takes are filled.
struct Options {
    Command command = Command::Help;
    bool json = false;
    bool verbose = false;
    std::chrono::milliseconds timeout = std::chrono::seconds(10);  ///< for what the service answers
    bool spawn = false;                       ///< start the service first where there is none
    std::optional<std::string> trustedOwner;  ///< whose service is good, too
    bool wait = false;
    bool ssml = false;               ///< the text of `say` is marked up
    std::vector<std::string> words;  ///< text of `say`, COMMAND of `lock`, names of `get`...
    std::string file;                ///< text file of `say`, "-" for standard input
    Prosody prosody;
    std::string language;  ///< `voices`: only this one
    std::string name;      ///< setting, feature or profile
    std::string value;     ///< `set`: the new value; `profile copy`: the destination
    uint32_t milliseconds = 0;
    uint32_t process = 0;  ///< `stop`: only what this one said; 0: everything
    uint32_t count = 0;    ///< `monitor`: leave after so many events; 0: never
    std::string helpText;
};

}  // namespace voxtrelctl

#endif
