// SPDX-License-Identifier: Apache-2.0
// The members of Client about profiles.
#include <charconv>
#include <cmath>
#include <system_error>

#include "vocabulary/Language.h"
#include "voxtrel/Client.h"
#include "voxtrel/ClientState.h"
#include "voxtrel/ProfileFile.h"
#include "voxtrel/session/SpeechRules.h"

namespace voxtrel {
namespace {

using TTS::TtsSetting;

template <typename Number>
constexpr auto kUnset = static_cast<Number>(WireSettings::kNotSet);

template <typename Number>
void put(const std::optional<Number>& value, Number& field) {
    if (value) {
        field = *value;
    }
}

template <typename Number>
std::optional<Number> get(Number field) {
    return field == kUnset<Number> ? std::nullopt : std::optional<Number>(field);
}

/// The setting without the language and the voice, which must be looked up.
TtsSetting numbersOf(const SpeechOptions& options) {
    TtsSetting setting("");
    put(options.speed, setting.mSpeed);
    put(options.pitch, setting.mPitch);
    put(options.volume, setting.mVolume);
    put(options.speechVolume, setting.mTtsVolume);
    put(options.mediaVolume, setting.mMediaVolume);
    setting.mPitch = std::round(setting.mPitch);
    setting.mVolume = std::round(setting.mVolume);
    return setting;
}

bool isSame(const TtsSetting& a, const TtsSetting& b) {
    return a.mSpeed == b.mSpeed && a.mPitch == b.mPitch && a.mVolume == b.mVolume &&
           a.mTtsVolume == b.mTtsVolume && a.mMediaVolume == b.mMediaVolume;
}

/// Nothing if it is not a number of a voice.
std::optional<std::uint32_t> numberOf(const std::string& voice) {
    std::uint32_t number = 0;
    const char* const end = voice.data() + voice.size();
    const auto read = std::from_chars(voice.data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

/// The language and the voice, which takes capabilities only where the voice has a name.
Result<WireSettings> lookUp(const SpeechOptions& options, Session& session) {
    WireSettings found;
    if (options.language) {
        found.language = languageOf(*options.language).value_or(LANG_NA);
    }
    const std::optional<std::uint32_t> number = numberOf(options.voice.value_or(""));
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

SpeechOptions optionsOf(const TtsSetting& setting) {
    SpeechOptions options;
    const EN_VOXTREL_LANGUAGE language = TTS::langStr2Id(setting.mLang);
    if (language < LANG_NA) {
        options.language = tagOf(language);
        const bool hasVoice = setting.mVoice != 0 && get(setting.mVoice);  // 0: the language's own
        options.voice = hasVoice ? std::optional(std::to_string(setting.mVoice)) : std::nullopt;
    }
    options.speed = get(setting.mSpeed);
    options.pitch = get(setting.mPitch);
    options.volume = get(setting.mVolume);
    options.speechVolume = get(setting.mTtsVolume);
    options.mediaVolume = get(setting.mMediaVolume);
    return options;
}

}  // namespace

Result<void> Client::saveProfile(const std::string& path) const {
    const SpeechOptions options = defaults();
    if (const Status status = checkOptions(options); status != Status::Ok) {
        return Error{status, describe(status)};
    }
    TtsSetting setting = numbersOf(options);
    if (!isSame(setting, rereadProfile(setting))) {
        return Error{Status::BadParameter, "a profile cannot hold so large a number"};
    }
    const Result<WireSettings> speaker = lookUp(options, *mState->session);
    if (!speaker) {
        return speaker.error();
    }
    setting.mLang = TTS::langId2Str(speaker->language);
    setting.mVoice = speaker->voice;
    return replaceProfile(path, setting);
}

Result<void> Client::loadProfile(const std::string& path) {
    const Result<TtsSetting> read = readProfile(path);
    if (!read) {
        return read.error();
    }
    SpeechOptions options = optionsOf(*read);
    const std::lock_guard<std::mutex> lock(mState->mutex);
    options.onLoss = mState->defaults.onLoss;
    mState->defaults = options;
    return {};
}

}  // namespace voxtrel
