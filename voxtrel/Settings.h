// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SETTINGS_H
#define VOXTREL_SETTINGS_H

#include <cstdint>
#include <optional>
#include <string>

namespace voxtrel {

/// Switches of the service; one that is off keeps clients from settings of their own there.
enum class Switch {
    Speech,  ///< off: nothing is spoken
    Speed,
    Pitch,
    Voice,
    Volume,
    MediaVolume,
    SpeechVolume,
};

/// Who has the service's lock.
enum class LockState {
    Free,
    HeldByThisProcess,
    HeldByAnother,
    Unknown,  ///< the service does not tell, or not this user
};

/// Settings that the service keeps for all its clients.
///
/// Read: those that the service does not tell are not set. Changed: those that are set.
struct GlobalSettings {
    std::optional<std::string> language = {};  ///< a tag, "fr-FR"
    std::optional<std::uint32_t> voice = {};   ///< its number in the language
    std::optional<std::uint32_t> speed = {};
    std::optional<std::uint32_t> rate = {};  ///< `Features::speed`; of most services the same
    std::optional<float> pitch = {};
    std::optional<float> volume = {};
    std::optional<std::uint32_t> speechVolume = {};  ///< per cent
    std::optional<std::uint32_t> mediaVolume = {};   ///< per cent
    std::optional<std::int32_t> verbosity = {};      ///< 1: punctuation is spoken
};

}  // namespace voxtrel

#endif
