// SPDX-License-Identifier: Apache-2.0
#include "tools/ClientSettings.h"

#include <algorithm>

#include "tools/Languages.h"
#include "tools/ProfileFile.h"
#include "tools/ServiceSettings.h"

namespace voxtrelctl {
namespace {

using voxtrel::Features;
using voxtrel::SpeechOptions;

void chooseLanguage(const std::string& text, const Features& can, SpeechOptions& chosen) {
    const std::string code = requireLanguage(text);
    const std::string tag = tagOf(code);
    if (std::find(can.languages.begin(), can.languages.end(), tag) == can.languages.end()) {
        throw Failure(TTS::STATUS_NOT_SUPPORTED, "language " + code);
    }
    chosen.language = tag;
    chosen.voice.reset();
}

void chooseVoice(Connection& connection, const std::string& text, const Features& can,
                 SpeechOptions& chosen) {
    if (!chosen.language) {
        chosen.language = serviceLanguage(connection);
    }
    const std::uint32_t number = voiceNumber(can, *chosen.language, text);
    requireAccepted(connection, settingNamed("voice"), number, can);
    chosen.voice = std::to_string(number);
}

void chooseNumbers(Connection& connection, const Prosody& prosody, const Features& can,
                   SpeechOptions& chosen) {
    for (const auto& [name, text] : prosody.values) {
        const Setting& setting = settingNamed(name);
        const Value value = parseValue(setting, text);
        requireAccepted(connection, setting, value, can);
        const voxtrel::GlobalSettings one = only(setting, value);
        chosen.speed = one.speed ? one.speed : chosen.speed;
        chosen.pitch = one.pitch ? one.pitch : chosen.pitch;
        chosen.volume = one.volume ? one.volume : chosen.volume;
        chosen.mediaVolume = one.mediaVolume ? one.mediaVolume : chosen.mediaVolume;
        chosen.speechVolume = one.speechVolume ? one.speechVolume : chosen.speechVolume;
    }
}

}  // namespace

void applyProsody(Connection& connection, const Prosody& prosody) {
    voxtrel::Client& client = connection.client();
    if (!prosody.profile.empty()) {
        check(client.loadProfile(profilePath(prosody.profile)));
    }
    SpeechOptions chosen = client.defaults();
    const Features can = connection.require(client.features(connection.left()));
    if (!prosody.language.empty()) {
        chooseLanguage(prosody.language, can, chosen);
    }
    if (!prosody.voice.empty()) {
        chooseVoice(connection, prosody.voice, can, chosen);
    }
    chooseNumbers(connection, prosody, can, chosen);
    client.setDefaults(chosen);
}

}  // namespace voxtrelctl
