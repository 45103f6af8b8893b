// SPDX-License-Identifier: Apache-2.0
// The members of Client about profiles.
#include "voxtrel/Client.h"
#include "voxtrel/ClientState.h"
#include "voxtrel/Profile.h"
#include "voxtrel/session/SpeechRules.h"

namespace voxtrel {
namespace {

/// The language and the voice, which takes capabilities only where the voice has a name.
Result<WireSettings> lookUp(const SpeechOptions& options, Session& session) {
    WireSettings found;
    if (options.language) {
        found.language = languageOf(*options.language).value_or(LANG_NA);
    }
    const std::optional<std::uint32_t> number = voiceNumberOf(options.voice.value_or(""));
    if (!options.voice || (number && options.language)) {
        found.voice = number.value_or(found.voice);
        return found;
    }
    const Result<TTS::Capabilities> known = session.capabilities(std::chrono::steady_clock::now());
    if (!known) {
        return Error{known.status(), std::string("the number of the voice '") + *options.voice +
                                         "' cannot be asked for: " + known.message()};
    }
    SpeechOptions speaker;
    speaker.language = options.language;
    speaker.voice = options.voice;
    return toWire(speaker, *known);
}

Profile profileOf(const SpeechOptions& options) {
    Profile profile;
    profile.settings.speed = options.speed;
    profile.settings.pitch = options.pitch;
    profile.settings.volume = options.volume;
    profile.settings.speechVolume = options.speechVolume;
    profile.settings.mediaVolume = options.mediaVolume;
    return profile;
}

SpeechOptions optionsOf(const GlobalSettings& settings) {
    SpeechOptions options;
    options.language = settings.language;
    if (settings.language && settings.voice.value_or(0) != 0) {  // 0: the language's own
        options.voice = std::to_string(*settings.voice);
    }
    options.speed = settings.speed;
    options.pitch = settings.pitch;
    options.volume = settings.volume;
    options.speechVolume = settings.speechVolume;
    options.mediaVolume = settings.mediaVolume;
    return options;
}

}  // namespace

Result<void> Client::saveProfile(const std::string& path) const {
    const SpeechOptions options = defaults();
    if (const Status status = checkOptions(options); status != Status::Ok) {
        return Error{status, describe(status)};
    }
    const Result<WireSettings> speaker = lookUp(options, *mState->session);
    if (!speaker) {
        return speaker.error();
    }
    Profile profile = profileOf(options);
    if (speaker->language != LANG_NA) {
        profile.settings.language = tagOf(speaker->language);
    }
    profile.settings.voice = speaker->voice;
    return profile.write(path);
}

Result<void> Client::loadProfile(const std::string& path) {
    const Result<Profile> read = Profile::read(path);
    if (!read) {
        return read.error();
    }
    SpeechOptions options = optionsOf(read->settings);
    const std::lock_guard<std::mutex> lock(mState->mutex);
    options.onLoss = mState->defaults.onLoss;
    mState->defaults = options;
    return {};
}

}  // namespace voxtrel
