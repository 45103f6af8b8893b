// SPDX-License-Identifier: Apache-2.0
#include "client/TTSClientPrivate.h"
#include "client/internal/Operations.h"

namespace TTS {

bool TTSClientPrivate::isSpeedSupported() {
    return refusalOfFeature(*this, GCONF_SPEED_ENABLE, mCapabilities.speedSupported) == 0;
}

bool TTSClientPrivate::isPitchSupported() {
    return refusalOfFeature(*this, GCONF_PITCH_ENABLE, mCapabilities.pitchSupported) == 0;
}

bool TTSClientPrivate::isVolumeSupported() {
    return refusalOfFeature(*this, GCONF_VOLUME_ENABLE, mCapabilities.volumeSupported) == 0;
}

bool TTSClientPrivate::isBgVolumeSupported() {
    return refusalOfFeature(*this, GCONF_BG_VOLUME_ENABLE, true) == 0;
}

bool TTSClientPrivate::isTtsVolumeSupported() {
    return refusalOfFeature(*this, GCONF_TTS_VOLUME_ENABLE, true) == 0;
}

unsigned int TTSClientPrivate::speedMin() {
    return mCapabilities.speedMin;
}

unsigned int TTSClientPrivate::speedMax() {
    return mCapabilities.speedMax;
}

float TTSClientPrivate::pitchMin() {
    return mCapabilities.pitchMin;
}

float TTSClientPrivate::pitchMax() {
    return mCapabilities.pitchMax;
}

float TTSClientPrivate::volumeMin() {
    return mCapabilities.volumeMin;
}

float TTSClientPrivate::volumeMax() {
    return mCapabilities.volumeMax;
}

unsigned int TTSClientPrivate::bgVolumeMin() {
    return kVolumePercentMin;
}

unsigned int TTSClientPrivate::bgVolumeMax() {
    return kVolumePercentMax;
}

unsigned int TTSClientPrivate::ttsVolumeMin() {
    return kVolumePercentMin;
}

unsigned int TTSClientPrivate::ttsVolumeMax() {
    return kVolumePercentMax;
}

}  // namespace TTS
