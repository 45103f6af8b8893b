// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_SETTINGCHANGE_H
#define VOXTREL_CLIENT_SETTINGCHANGE_H

#include <cstdint>

namespace TTS {

/// The event that a client sends to its own application when a setter stores a new value: the
/// notification function is called with (kSettingChanged, 0, one of SettingKind).
constexpr uint32_t kSettingChanged = 6;

/// Third number of a kSettingChanged event.
enum SettingKind : uint32_t {
    kLanguageChanged = 0,
    kSpeedChanged = 1,
    kPitchChanged = 2,
    kVoiceChanged = 3,
    kVolumeChanged = 4,
    kBgVolumeChanged = 5,
    kTtsVolumeChanged = 6,
};

}  // namespace TTS

#endif
