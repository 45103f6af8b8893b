// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_INTERNAL_FEATURE_H
#define VOXTREL_CLIENT_INTERNAL_FEATURE_H

#include <cstdint>

#include "profile/TtsSetting.h"
#include "vocabulary/Capabilities.h"
#include "vocabulary/Events.h"
#include "vocabulary/GlobalConfig.h"

namespace TTS {

/// A number that each client sets for itself and the service for all; T is its type. One without
/// members of the capabilities always exists, and is a percentage.
template <typename T>
struct Feature {
    const char* setter;  ///< of a client's own value
    const char* traceFormat;
    const char* rejectionFormat;
    const char* globalRejectionFormat;
    VOXTRELAPI_GCONF flagKey;
    SettingKind kind;
    T TtsSetting::*current;
    bool Capabilities::*supported = nullptr;
    T Capabilities::*lowest = nullptr;
    T Capabilities::*highest = nullptr;

    bool isSupported(const Capabilities& capabilities) const {
        return supported == nullptr || capabilities.*supported;
    }
    T min(const Capabilities& capabilities) const {
        return lowest == nullptr ? T(0) : capabilities.*lowest;
    }
    T max(const Capabilities& capabilities) const {
        return highest == nullptr ? T(100) : capabilities.*highest;
    }

    /// By the two ordered tests, so NaN is in every range.
    bool isOutside(T value, const Capabilities& capabilities) const {
        return value < min(capabilities) || value > max(capabilities);
    }
};

inline constexpr Feature<uint32_t> kSpeed = {"setSpeed",
                                             "[Client] %s(), speed = %d\n",
                                             "setSpeed: %d, bad parameter\n",
                                             "setGlobalRate: %d, bad parameter\n",
                                             GCONF_SPEED_ENABLE,
                                             SETTING_SPEED,
                                             &TtsSetting::mSpeed,
                                             &Capabilities::speedSupported,
                                             &Capabilities::speedMin,
                                             &Capabilities::speedMax};
inline constexpr Feature<float> kPitch = {"setPitch",
                                          "[Client] %s(), pitch = %f\n",
                                          "setPitch: %f, bad parameter\n",
                                          "setGlobalPitch: %f, bad parameter\n",
                                          GCONF_PITCH_ENABLE,
                                          SETTING_PITCH,
                                          &TtsSetting::mPitch,
                                          &Capabilities::pitchSupported,
                                          &Capabilities::pitchMin,
                                          &Capabilities::pitchMax};
inline constexpr Feature<float> kVolume = {"setVolume",
                                           "[Client] %s(), volume = %f\n",
                                           "setVolume: %f, bad parameter\n",
                                           "setGlobalVolume: %f, bad parameter\n",
                                           GCONF_VOLUME_ENABLE,
                                           SETTING_VOLUME,
                                           &TtsSetting::mVolume,
                                           &Capabilities::volumeSupported,
                                           &Capabilities::volumeMin,
                                           &Capabilities::volumeMax};
inline constexpr Feature<uint32_t> kBgVolume = {"setBgVolume",
                                                "[Client] %s(), BgVolume = %d\n",
                                                "setBgVolume: %d, bad parameter\n",
                                                "setBgVolume: %d, bad parameter\n",
                                                GCONF_BG_VOLUME_ENABLE,
                                                SETTING_BG_VOLUME,
                                                &TtsSetting::mMediaVolume};
inline constexpr Feature<uint32_t> kTtsVolume = {"setTtsVolume",
                                                 "[Client] %s(), TtsVolume = %d\n",
                                                 "setTtsVolume: %d, bad parameter\n",
                                                 "setTtsVolume: %d, bad parameter\n",
                                                 GCONF_TTS_VOLUME_ENABLE,
                                                 SETTING_TTS_VOLUME,
                                                 &TtsSetting::mTtsVolume};

}  // namespace TTS

#endif
