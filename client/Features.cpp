// SPDX-License-Identifier: Apache-2.0
#include "client/TTSClientPrivate.h"
#include "client/internal/Feature.h"
#include "client/internal/Operations.h"

namespace TTS {

bool TTSClientPrivate::isSpeedSupported() {
    return refusalOf(*this, kSpeed) == 0;
}

bool TTSClientPrivate::isPitchSupported() {
    return refusalOf(*this, kPitch) == 0;
}

bool TTSClientPrivate::isVolumeSupported() {
    return refusalOf(*this, kVolume) == 0;
}

bool TTSClientPrivate::isBgVolumeSupported() {
    return refusalOf(*this, kBgVolume) == 0;
}

bool TTSClientPrivate::isTtsVolumeSupported() {
    return refusalOf(*this, kTtsVolume) == 0;
}

unsigned int TTSClientPrivate::speedMin() {
    return kSpeed.min(mCapabilities);
}

unsigned int TTSClientPrivate::speedMax() {
    return kSpeed.max(mCapabilities);
}

float TTSClientPrivate::pitchMin() {
    return kPitch.min(mCapabilities);
}

float TTSClientPrivate::pitchMax() {
    return kPitch.max(mCapabilities);
}

float TTSClientPrivate::volumeMin() {
    return kVolume.min(mCapabilities);
}

float TTSClientPrivate::volumeMax() {
    return kVolume.max(mCapabilities);
}

unsigned int TTSClientPrivate::bgVolumeMin() {
    return kBgVolume.min(mCapabilities);
}

unsigned int TTSClientPrivate::bgVolumeMax() {
    return kBgVolume.max(mCapabilities);
}

unsigned int TTSClientPrivate::ttsVolumeMin() {
    return kTtsVolume.min(mCapabilities);
}

unsigned int TTSClientPrivate::ttsVolumeMax() {
    return kTtsVolume.max(mCapabilities);
}

}  // namespace TTS
