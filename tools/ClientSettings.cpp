// SPDX-License-Identifier: Apache-2.0
#include "tools/ClientSettings.h"

#include <algorithm>

#include "tools/Errors.h"
#include "tools/ProfileFile.h"
#include "tools/ServiceSettings.h"
#include "vocabulary/Language.h"

namespace voxtrelctl {
namespace {

struct Setter {
    const char* name;
    int (TTS::TTSClientPrivate::*set)(void*);
};

constexpr Setter kSetters[] = {
    {"speed", &TTS::TTSClientPrivate::setSpeed},
    {"pitch", &TTS::TTSClientPrivate::setPitch},
    {"volume", &TTS::TTSClientPrivate::setVolume},
    {"bg-volume", &TTS::TTSClientPrivate::setBgVolume},
    {"tts-volume", &TTS::TTSClientPrivate::setTtsVolume},
};

void applyNumber(Session& session, const Setter& setter, const std::string& text) {
    const Setting& setting = *findSetting(setter.name);
    Value value = parseValue(setting, text);
    void* address = setting.type == ValueType::Float ? static_cast<void*>(&std::get<float>(value))
                                                     : &std::get<uint32_t>(value);
    check(((*session.client()).*setter.set)(address),
          std::string(setter.name) + " " + text + acceptedText(setting, session.capabilities()));
}

void applyLanguage(Session& session, std::string code) {
    if (TTS::langStr2Id(code) == LANG_NA) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, "there is no language \"" + code + "\"",
                      "there are " + session.client()->supportLanguages());
    }
    check(session.client()->setLanguage(code.data()), "language " + code);
}

/// The number of a voice given by number or name.
uint32_t voiceNumber(Session& session, const std::string& text, EN_VOXTREL_LANGUAGE language) {
    const std::string code = TTS::langId2Str(language);
    for (const VoiceReport& voice : surveyVoices(session)) {
        if (voice.language == code && voice.name == text) {
            return voice.id;
        }
    }
    if (text.find_first_not_of("0123456789") != std::string::npos) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, code + " has no voice \"" + text + "\"",
                      "see voxtrelctl voices " + code);
    }
    return std::get<uint32_t>(parseValue(*findSetting("voice"), text));
}

void applyVoice(Session& session, const std::string& text) {
    EN_VOXTREL_LANGUAGE language = TTS::langStr2Id(session.client()->mSetting.mLang);
    if (language == LANG_NA) {
        language = globalLanguage(session);
        if (language == LANG_NA) {
            throw Failure(TTS::STATUS_NO_LANGUAGE, "and the service does not tell its own");
        }
        applyLanguage(session, TTS::langId2Str(language));
    }
    uint32_t number = voiceNumber(session, text, language);
    check(session.client()->setVoice(&number),
          "voice " + text + " of " + TTS::langId2Str(language));
}

}  // namespace

void applyProsody(Session& session, const Prosody& prosody) {
    if (!prosody.profile.empty()) {
        readProfile(*session.client(), profilePath(prosody.profile));
    }
    if (!prosody.language.empty()) {
        applyLanguage(session, prosody.language);
    }
    if (!prosody.voice.empty()) {
        applyVoice(session, prosody.voice);
    }
    for (const Setter& setter : kSetters) {
        const auto given = prosody.values.find(setter.name);
        if (given != prosody.values.end()) {
            applyNumber(session, setter, given->second);
        }
    }
}

}  // namespace voxtrelctl
