// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "client/TTSClientPrivate.h"
#include "client/internal/Log.h"
#include "client/internal/Operations.h"
#include "client/internal/Values.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

/// What tells one setter from the next; T is the type of the value behind the pointer.
template <typename T>
struct Control {
    const char* operation;
    const char* traceFormat;
    const char* rejectionFormat;
    VOXTRELAPI_GCONF flagKey;
    SettingKind kind;
    T TtsSetting::*current;
};

template <typename T>
struct Range {
    T min;
    T max;
};

constexpr Control<uint32_t> kSpeed = {"setSpeed",
                                      "[Client] %s(), speed = %d\n",
                                      "setSpeed: %d, bad parameter\n",
                                      GCONF_SPEED_ENABLE,
                                      SETTING_SPEED,
                                      &TtsSetting::mSpeed};
constexpr Control<float> kPitch = {"setPitch",
                                   "[Client] %s(), pitch = %f\n",
                                   "setPitch: %f, bad parameter\n",
                                   GCONF_PITCH_ENABLE,
                                   SETTING_PITCH,
                                   &TtsSetting::mPitch};
constexpr Control<float> kVolume = {"setVolume",
                                    "[Client] %s(), volume = %f\n",
                                    "setVolume: %f, bad parameter\n",
                                    GCONF_VOLUME_ENABLE,
                                    SETTING_VOLUME,
                                    &TtsSetting::mVolume};
constexpr Control<uint32_t> kBgVolume = {"setBgVolume",
                                         "[Client] %s(), BgVolume = %d\n",
                                         "setBgVolume: %d, bad parameter\n",
                                         GCONF_BG_VOLUME_ENABLE,
                                         SETTING_BG_VOLUME,
                                         &TtsSetting::mMediaVolume};
constexpr Control<uint32_t> kTtsVolume = {"setTtsVolume",
                                          "[Client] %s(), TtsVolume = %d\n",
                                          "setTtsVolume: %d, bad parameter\n",
                                          GCONF_TTS_VOLUME_ENABLE,
                                          SETTING_TTS_VOLUME,
                                          &TtsSetting::mTtsVolume};

constexpr Range<uint32_t> kPercent = {kVolumePercentMin, kVolumePercentMax};

/// Floats are compared by the two ordered tests, so NaN is in every range.
template <typename T>
bool isOutside(T value, const Range<T>& range) {
    return value != static_cast<T>(kNeverSet) && (value < range.min || value > range.max);
}

template <typename T>
int set(TTSClientPrivate& client, const Control<T>& control, const Range<T>& range, bool capable,
        const void* address) {
    if (address == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    const T value = load<T>(address);
    dbgPrint(kLogTrace, control.traceFormat, control.operation, value);
    if (isOutside(value, range)) {
        dbgPrint(kLogRejected, control.rejectionFormat, value);
        return STATUS_BAD_PARAMETER;
    }
    const int refusal = refusalOfFeature(client, control.flagKey, capable);
    if (refusal != 0) {
        return refusal;
    }
    T& current = client.mSetting.*control.current;
    if (current != value) {
        current = value;
        announce(client, control.kind);
    }
    return STATUS_OK;
}

}  // namespace

int TTSClientPrivate::setSpeed(void* value) {
    const Range<uint32_t> range = {mCapabilities.speedMin, mCapabilities.speedMax};
    return set(*this, kSpeed, range, mCapabilities.speedSupported, value);
}

int TTSClientPrivate::setPitch(void* value) {
    const Range<float> range = {mCapabilities.pitchMin, mCapabilities.pitchMax};
    return set(*this, kPitch, range, mCapabilities.pitchSupported, value);
}

int TTSClientPrivate::setVolume(void* value) {
    const Range<float> range = {mCapabilities.volumeMin, mCapabilities.volumeMax};
    return set(*this, kVolume, range, mCapabilities.volumeSupported, value);
}

int TTSClientPrivate::setBgVolume(void* value) {
    return set(*this, kBgVolume, kPercent, true, value);
}

int TTSClientPrivate::setTtsVolume(void* value) {
    return set(*this, kTtsVolume, kPercent, true, value);
}

int TTSClientPrivate::speed(void* out) {
    return copyOut(mSetting.mSpeed, out);
}

int TTSClientPrivate::pitch(void* out) {
    return copyOut(mSetting.mPitch, out);
}

int TTSClientPrivate::volume(void* out) {
    return copyOut(mSetting.mVolume, out);
}

int TTSClientPrivate::bgvolume(void* out) {
    return copyOut(mSetting.mMediaVolume, out);
}

int TTSClientPrivate::ttsvolume(void* out) {
    return copyOut(mSetting.mTtsVolume, out);
}

int TTSClientPrivate::voice(void* out) {
    return copyOut(mSetting.mVoice, out);
}

int TTSClientPrivate::language(void* out, unsigned int len) {
    if (out == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    const size_t copied = std::min<size_t>(len, mSetting.mLang.size());
    std::memcpy(out, mSetting.mLang.data(), copied);
    std::memset(static_cast<char*>(out) + copied, 0, len - copied);
    return STATUS_OK;
}

}  // namespace TTS
