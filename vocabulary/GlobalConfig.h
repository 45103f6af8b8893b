// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_VOCABULARY_GLOBALCONFIG_H
#define VOXTREL_VOCABULARY_GLOBALCONFIG_H

#include <cstdint>

/// Key of one service-wide ("global") setting.
///
/// Keys 2 to 13 come in pairs: an even key names a value, the next odd key that value's enable
/// flag. Values travel through `setGlobalConfig` and `globalConfig` behind an untyped pointer whose
/// type the key decides; flags travel through `setEnable2` and `enabled2` as one `bool`. Key 1 is
/// an integer value without a meaning of its own; 0 and everything above 14 carry nothing.
enum VOXTRELAPI_GCONF : int32_t {
    GCONF_SPEED = 2,               ///< `uint32_t` rate, `speedMin` to `speedMax`
    GCONF_SPEED_ENABLE = 3,        ///< `bool`
    GCONF_PITCH = 4,               ///< `float`, `pitchMin` to `pitchMax`
    GCONF_PITCH_ENABLE = 5,        ///< `bool`
    GCONF_VOICE = 6,               ///< `uint32_t` voice id, counted from 1 within a language
    GCONF_VOICE_ENABLE = 7,        ///< `bool`
    GCONF_VOLUME = 8,              ///< `float`, `volumeMin` to `volumeMax`
    GCONF_VOLUME_ENABLE = 9,       ///< `bool`
    GCONF_BG_VOLUME = 10,          ///< `uint32_t`, 0 to 100
    GCONF_BG_VOLUME_ENABLE = 11,   ///< `bool`
    GCONF_TTS_VOLUME = 12,         ///< `uint32_t`, 0 to 100
    GCONF_TTS_VOLUME_ENABLE = 13,  ///< `bool`
    /// Written: the pointer itself is a NUL-terminated locale code. Read: it is a zero-filled
    /// buffer of 16 characters.
    GCONF_LANGUAGE = 14,
};

#endif
