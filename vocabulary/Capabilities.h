// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_VOCABULARY_CAPABILITIES_H
#define VOXTREL_VOCABULARY_CAPABILITIES_H

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "vocabulary/Language.h"

namespace TTS {

/// One voice of the service. Crosses the service interface as its 72 bytes of memory, so the
/// layout is part of the protocol.
struct VoiceInfo {
    EN_VOXTREL_LANGUAGE langId;  ///< language of the voice
    uint32_t id;                 ///< what `setVoice` and `GCONF_VOICE` select; from 1 in a language
    char name[64];               ///< NUL-terminated, at most 63 characters
};

static_assert(std::is_trivially_copyable<VoiceInfo>::value, "sent as raw bytes");
static_assert(std::is_standard_layout<VoiceInfo>::value, "sent as raw bytes");
static_assert(sizeof(VoiceInfo) == 72, "72 bytes on the wire");
static_assert(offsetof(VoiceInfo, langId) == 0, "first word of the record");
static_assert(offsetof(VoiceInfo, id) == 4, "second word of the record");
static_assert(offsetof(VoiceInfo, name) == 8, "name follows the two words");

/// What the service can do, as one client last fetched it. A value type that owns its vectors.
///
/// After a successful fetch `languages` and `voicesNum` hold exactly five entries each, indexed by
/// language id; a service must fill exactly five of each, because the reader takes five.
struct Capabilities {
    bool ready = false;  ///< the service has finished filling this record; ask again while false
    bool pitchSupported = false;
    float pitchMin = 0.0F;
    float pitchMax = 0.0F;
    bool volumeSupported = false;
    float volumeMin = 0.0F;
    float volumeMax = 0.0F;
    bool speedSupported = false;
    uint32_t speedMin = 0;
    uint32_t speedMax = 0;
    std::vector<bool> languages;     ///< by language id: the service speaks it
    std::vector<int32_t> voicesNum;  ///< by language id: how many voices it has
    std::vector<VoiceInfo> voices;   ///< every voice, in the service's order
    bool permitted = false;          ///< the service admits this client
};

}  // namespace TTS

#endif
