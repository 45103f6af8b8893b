// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"

using namespace voxtrel::c;
using voxtrel::Features;

namespace {

template <typename Number>
vx_status giveRange(const vx_features* features, voxtrel::Range<Number> Features::*range,
                    Number* least, Number* most) noexcept {
    if (!areGiven(features, least, most)) {
        return VX_BAD_PARAMETER;
    }
    const voxtrel::Range<Number>& found = features->*range;
    if (!found.isSupported) {
        return fail(VX_NOT_SUPPORTED);
    }
    *least = found.least;
    *most = found.most;
    return VX_OK;
}

template <typename Item>
vx_status giveCount(const vx_features* features, std::vector<Item> Features::*items,
                    size_t* count) noexcept {
    if (!areGiven(features, count)) {
        return VX_BAD_PARAMETER;
    }
    *count = (features->*items).size();
    return VX_OK;
}

vx_status giveLanguage(const vx_features* features, std::vector<std::string> Features::*languages,
                       size_t index, const char** tag) noexcept {
    if (!areGiven(features, tag)) {
        return VX_BAD_PARAMETER;
    }
    if (index >= (features->*languages).size()) {
        return badParameter("there are not so many languages");
    }
    *tag = (features->*languages)[index].c_str();
    return VX_OK;
}

vx_status giveVoice(const vx_features* features, std::vector<voxtrel::Voice> Features::*voices,
                    size_t index, vx_voice* voice) noexcept {
    if (!areGiven(features, voice)) {
        return VX_BAD_PARAMETER;
    }
    if (index >= (features->*voices).size()) {
        return badParameter("there are not so many voices");
    }
    const voxtrel::Voice& found = (features->*voices)[index];
    *voice = {found.name.c_str(), found.language.c_str(), found.number, {}};
    return VX_OK;
}

}  // namespace

vx_status vx_get_features(vx_client* client, int deadline_ms, vx_features** features) {
    Deadline deadline;
    if (!areGiven(client, features) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        return finish(client->client.features(deadline), [features](Features&& found) {
            *features = new vx_features{std::move(found)};
        });
    });
}

vx_status vx_features_free(vx_features* features) {
    return destroy(features);
}

vx_status vx_features_speed(const vx_features* features, unsigned int* least, unsigned int* most) {
    return giveRange(features, &Features::speed, least, most);
}

vx_status vx_features_pitch(const vx_features* features, float* least, float* most) {
    return giveRange(features, &Features::pitch, least, most);
}

vx_status vx_features_volume(const vx_features* features, float* least, float* most) {
    return giveRange(features, &Features::volume, least, most);
}

vx_status vx_features_language_count(const vx_features* features, size_t* count) {
    return giveCount(features, &Features::languages, count);
}

vx_status vx_features_language(const vx_features* features, size_t index, const char** tag) {
    return giveLanguage(features, &Features::languages, index, tag);
}

vx_status vx_features_voice_count(const vx_features* features, size_t* count) {
    return giveCount(features, &Features::voices, count);
}

vx_status vx_features_voice(const vx_features* features, size_t index, vx_voice* voice) {
    return giveVoice(features, &Features::voices, index, voice);
}

vx_status vx_features_filtered_language_count(const vx_features* features, size_t* count) {
    return giveCount(features, &Features::filteredLanguages, count);
}

vx_status vx_features_filtered_language(const vx_features* features, size_t index,
                                        const char** tag) {
    return giveLanguage(features, &Features::filteredLanguages, index, tag);
}

vx_status vx_features_filtered_voice_count(const vx_features* features, size_t* count) {
    return giveCount(features, &Features::filteredVoices, count);
}

vx_status vx_features_filtered_voice(const vx_features* features, size_t index, vx_voice* voice) {
    return giveVoice(features, &Features::filteredVoices, index, voice);
}
