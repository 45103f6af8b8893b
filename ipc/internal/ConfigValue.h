// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_INTERNAL_CONFIGVALUE_H
#define VOXTREL_IPC_INTERNAL_CONFIGVALUE_H

#include <cstddef>
#include <cstdint>

#include "vocabulary/GlobalConfig.h"

namespace TTS {

/// How the value of a global configuration key lies in memory and on the wire.
enum class ConfigValue {
    kNone,     ///< the key carries no value: an enable key, or a number outside 1 to 14
    kInteger,  ///< a 32-bit integer
    kFloat,    ///< a 32-bit float
    kText,     ///< int32 length, then that many bytes without a terminator
};

/// The kind of value of `key`, for any 32-bit key. Proxy and stub share nothing else about values:
/// each reads and writes them in its own way.
constexpr ConfigValue configValueOf(VOXTRELAPI_GCONF key) {
    switch (static_cast<int32_t>(key)) {
        case 1:
        case GCONF_SPEED:
        case GCONF_VOICE:
        case GCONF_BG_VOLUME:
        case GCONF_TTS_VOLUME:
            return ConfigValue::kInteger;
        case GCONF_PITCH:
        case GCONF_VOLUME:
            return ConfigValue::kFloat;
        case GCONF_LANGUAGE:
            return ConfigValue::kText;
        default:
            return ConfigValue::kNone;
    }
}

/// Bytes of the buffer that a caller of `globalConfig` gives for `GCONF_LANGUAGE`.
constexpr size_t kLanguageOutSize = 16;

}  // namespace TTS

#endif
