// SPDX-License-Identifier: Apache-2.0
#include "service/SpeechSettings.h"

#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

/// The value asked for, or the global one where it is unset or may not be changed.
template <typename Value>
Value choose(Value asked, Value global, VOXTRELAPI_GCONF flagKey, const GlobalSettings& settings) {
    bool on = false;
    (void)settings.flag(flagKey, on);
    return on && asked != static_cast<Value>(kUnset) ? asked : global;
}

bool isPercent(uint32_t value) {
    return value <= 100;
}

/// The number of the voice in its language, from 1; 0 if there is no such voice.
uint32_t voiceNumber(uint32_t asked, EN_VOXTREL_LANGUAGE language, const GlobalSettings& global) {
    const uint32_t count = global.voiceCount(language);
    const uint32_t fallback =
        language == global.language() && global.voice() <= count ? global.voice() : 0;
    const uint32_t chosen = choose(asked, fallback, GCONF_VOICE_ENABLE, global);
    if (chosen > count) {
        return 0;
    }
    return chosen == 0 ? 1 : chosen;
}

}  // namespace

int resolve(const SpeechSettings& asked, const GlobalSettings& global, Utterance& utterance) {
    const bool hasLanguage = asked.language >= LANG_EN_US && asked.language < LANG_NA;
    Prosody& prosody = utterance.prosody;
    prosody.language = hasLanguage ? asked.language : global.language();
    if (global.voiceCount(prosody.language) == 0) {
        return STATUS_NOT_SUPPORTED;
    }
    prosody.voice = voiceNumber(asked.voice, prosody.language, global);
    prosody.speed = choose(asked.speed, global.speed(), GCONF_SPEED_ENABLE, global);
    prosody.pitch = choose(asked.pitch, global.pitch(), GCONF_PITCH_ENABLE, global);
    prosody.punctuation = global.verbosity() != 0;
    const float volume = choose(asked.volume, global.volume(), GCONF_VOLUME_ENABLE, global);
    const uint32_t tts =
        choose(asked.ttsVolume, global.ttsVolume(), GCONF_TTS_VOLUME_ENABLE, global);
    const uint32_t background =
        choose(asked.bgVolume, global.backgroundVolume(), GCONF_BG_VOLUME_ENABLE, global);
    if (prosody.voice == 0 || !isSpeed(prosody.speed) || !isPitch(prosody.pitch) ||
        !isVolume(volume) || !isPercent(tts) || !isPercent(background)) {
        return STATUS_BAD_PARAMETER;
    }
    utterance.gain = volume / 100.0F * static_cast<float>(tts) / 100.0F;
    utterance.backgroundGain = static_cast<float>(background) / 100.0F;
    return STATUS_OK;
}

}  // namespace voxtreld
