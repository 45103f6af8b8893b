// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "client/TTSClientPrivate.h"
#include "client/internal/Feature.h"
#include "client/internal/Log.h"
#include "client/internal/Operations.h"
#include "client/internal/Values.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

template <typename T>
int set(TTSClientPrivate& client, const Feature<T>& feature, const void* address) {
    if (address == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    const T value = load<T>(address);
    dbgPrint(kLogTrace, feature.traceFormat, feature.setter, value);
    if (value != static_cast<T>(kNeverSet) && feature.isOutside(value, client.mCapabilities)) {
        dbgPrint(kLogRejected, feature.rejectionFormat, value);
        return STATUS_BAD_PARAMETER;
    }
    const int refusal = refusalOf(client, feature);
    if (refusal != 0) {
        return refusal;
    }
    T& current = client.mSetting.*feature.current;
    if (current != value) {
        current = value;
        announce(client, feature.kind);
    }
    return STATUS_OK;
}

}  // namespace

int TTSClientPrivate::setSpeed(void* value) {
    return set(*this, kSpeed, value);
}

int TTSClientPrivate::setPitch(void* value) {
    return set(*this, kPitch, value);
}

int TTSClientPrivate::setVolume(void* value) {
    return set(*this, kVolume, value);
}

int TTSClientPrivate::setBgVolume(void* value) {
    return set(*this, kBgVolume, value);
}

int TTSClientPrivate::setTtsVolume(void* value) {
    return set(*this, kTtsVolume, value);
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
