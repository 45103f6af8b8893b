// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrelctl/Sound.h"

#include <espeak-ng/speak_lib.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace voxtrel_test {
namespace {

int collect(short* samples, int count, espeak_EVENT* events) {
    auto* sound = static_cast<Sound*>(events->user_data);
    if (samples != nullptr && sound != nullptr) {
        sound->samples.insert(sound->samples.end(), samples, samples + count);
    }
    return 0;
}

}  // namespace

bool Sound::isSilent() const {
    return std::all_of(samples.begin(), samples.end(), [](int16_t s) { return s == 0; });
}

double Sound::loudness() const {
    double sum = 0;
    for (const int16_t sample : samples) {
        sum += static_cast<double>(sample) * sample;
    }
    return samples.empty() ? 0 : std::sqrt(sum / static_cast<double>(samples.size()));
}

Sound readSound(const std::string& path) {
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr || info.channels != 1) {
        sf_close(file);
        throw std::runtime_error("no mono sound in " + path);
    }
    Sound sound;
    sound.rate = info.samplerate;
    sound.samples.resize(static_cast<size_t>(info.frames));
    const sf_count_t got = sf_read_short(file, sound.samples.data(), info.frames);
    sf_close(file);
    if (got != info.frames) {
        throw std::runtime_error(path + " ends too early");
    }
    return sound;
}

Sound engineAlone(const std::string& text, const std::string& voice, int rate) {
    Sound sound;
    sound.rate = espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 0, nullptr, 0);
    espeak_SetSynthCallback(&collect);
    if (sound.rate <= 0 || espeak_SetVoiceByName(voice.c_str()) != EE_OK) {
        throw std::runtime_error("the engine has no voice " + voice);
    }
    espeak_SetParameter(espeakRATE, rate, 0);
    espeak_Synth(text.c_str(), text.size() + 1, 0, POS_CHARACTER, 0, espeakCHARS_UTF8, nullptr,
                 &sound);
    espeak_Synchronize();
    return sound;
}

}  // namespace voxtrel_test
