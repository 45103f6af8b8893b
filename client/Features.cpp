// SPDX-License-Identifier: Apache-2.0
#include "client/Operations.h"
#include "client/TTSClientPrivate.h"

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

unsigned int TTSClientPrivate::speedMin() const {
    return mCapabilities.speedMin;
}

unsigned int TTSClientPrivate::speedMax() const {
    return mCapabilities.speedMax;
}

float TTSClientPrivate::pitchMin() const {
    return mCapabilities.pitchMin;
}

float TTSClientPrivate::pitchMax() const {
    return mCapabilities.pitchMax;
}

float TTSClientPrivate::volumeMin() const {
    return mCapabilities.volumeMin;
}

float TTSClientPrivate::volumeMax() const {
    return mCapabilities.volumeMax;
}

unsigned int TTSClientPrivate::bgVolumeMin() const {
    return kVolumePercentMin;
}

unsigned int TTSClientPrivate::bgVolumeMax() const {
    return kVolumePercentMax;
}

unsigned int TTSClientPrivate::ttsVolumeMin() const {
    return kVolumePercentMin;
}

unsigned int TTSClientPrivate::ttsVolumeMax() const {
    return kVolumePercentMax;
}

}  // namespace TTS
