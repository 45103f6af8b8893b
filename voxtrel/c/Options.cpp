// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"
#include "voxtrel/c/Values.h"

using namespace voxtrel::c;
using voxtrel::OnLoss;
using voxtrel::SpeechOptions;

static_assert(static_cast<int>(OnLoss::Report) == VX_REPORT);
static_assert(static_cast<int>(OnLoss::SayAgain) == VX_SAY_AGAIN);
static_assert(static_cast<int>(OnLoss::SayAgainWhatever) == VX_SAY_AGAIN_WHATEVER);

vx_status vx_options_new(vx_options** options) {
    return create(options);
}

vx_status vx_options_free(vx_options* options) {
    return destroy(options);
}

vx_status vx_options_set_language(vx_options* options, const char* tag) {
    return set(options, &SpeechOptions::language, tag);
}

vx_status vx_options_set_voice(vx_options* options, const char* voice) {
    return set(options, &SpeechOptions::voice, voice);
}

vx_status vx_options_set_speed(vx_options* options, unsigned int speed) {
    return set(options, &SpeechOptions::speed, speed);
}

vx_status vx_options_set_pitch(vx_options* options, float pitch) {
    return set(options, &SpeechOptions::pitch, pitch);
}

vx_status vx_options_set_volume(vx_options* options, float volume) {
    return set(options, &SpeechOptions::volume, volume);
}

vx_status vx_options_set_speech_volume(vx_options* options, unsigned int percent) {
    return set(options, &SpeechOptions::speechVolume, percent);
}

vx_status vx_options_set_media_volume(vx_options* options, unsigned int percent) {
    return set(options, &SpeechOptions::mediaVolume, percent);
}

vx_status vx_options_get_language(const vx_options* options, const char** tag) {
    return get(options, &SpeechOptions::language, tag);
}

vx_status vx_options_get_voice(const vx_options* options, const char** voice) {
    return get(options, &SpeechOptions::voice, voice);
}

vx_status vx_options_get_speed(const vx_options* options, unsigned int* speed) {
    return get(options, &SpeechOptions::speed, speed);
}

vx_status vx_options_get_pitch(const vx_options* options, float* pitch) {
    return get(options, &SpeechOptions::pitch, pitch);
}

vx_status vx_options_get_volume(const vx_options* options, float* volume) {
    return get(options, &SpeechOptions::volume, volume);
}

vx_status vx_options_get_speech_volume(const vx_options* options, unsigned int* percent) {
    return get(options, &SpeechOptions::speechVolume, percent);
}

vx_status vx_options_get_media_volume(const vx_options* options, unsigned int* percent) {
    return get(options, &SpeechOptions::mediaVolume, percent);
}

vx_status vx_options_set_on_loss(vx_options* options, int on_loss) {
    if (on_loss < VX_REPORT || on_loss > VX_SAY_AGAIN_WHATEVER) {
        return badParameter("what to do on loss has no such name");
    }
    return set(options, &SpeechOptions::onLoss, static_cast<OnLoss>(on_loss));
}

vx_status vx_options_get_on_loss(const vx_options* options, int* on_loss) {
    return get(options, &SpeechOptions::onLoss, on_loss);
}
