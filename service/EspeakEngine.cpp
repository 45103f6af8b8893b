// SPDX-License-Identifier: Apache-2.0
#include "service/EspeakEngine.h"

#include <espeak-ng/speak_lib.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace voxtreld {
namespace {

struct LanguageCode {
    EN_VOXTREL_LANGUAGE language;
    const char* code;  ///< as the engine spells it
};

constexpr LanguageCode kLanguages[] = {
    {LANG_EN_US, "en-us"}, {LANG_FR_FR, "fr-fr"}, {LANG_ES_ES, "es"},
    {LANG_KO_KR, "ko"},    {LANG_PT_PT, "pt"},
};

constexpr const char* kVariantFolder = "!v/";

/// The priority that a voice gives a language, or -1 if it does not name it. A voice lists its
/// languages as a priority byte and a terminated code each, up to a zero byte.
int priorityFor(const espeak_VOICE& voice, const char* code) {
    for (const char* entry = voice.languages; *entry != '\0'; entry += std::strlen(entry) + 1) {
        if (std::strcmp(entry + 1, code) == 0) {
            return *entry;
        }
    }
    return -1;
}

/// The name of the voice that speaks a language best, empty if there is none.
std::string plainVoiceFor(const char* code) {
    std::string name;
    int best = 0;
    for (const espeak_VOICE** voice = espeak_ListVoices(nullptr); *voice != nullptr; ++voice) {
        // "mb/" voices need a second synthesizer, which may not be there.
        const bool needsMbrola = std::strncmp((*voice)->identifier, "mb/", 3) == 0;
        const int priority = priorityFor(**voice, code);
        if (!needsMbrola && priority >= 0 && (name.empty() || priority < best)) {
            name = (*voice)->name;
            best = priority;
        }
    }
    return name;
}

/// True for "f1", "m8" and the like: the family of plain variants, without the caricatures.
bool isNumberedVariant(const std::string& name) {
    return name.size() == 2 && (name[0] == 'f' || name[0] == 'm') && name[1] >= '1' &&
           name[1] <= '9';
}

/// Female before male, so that the first two voices differ, which is all that some clients show.
std::vector<std::string> numberedVariants() {
    espeak_VOICE wanted = {};
    wanted.languages = "variant";
    std::vector<std::string> names;
    for (const espeak_VOICE** voice = espeak_ListVoices(&wanted); *voice != nullptr; ++voice) {
        const std::string identifier = (*voice)->identifier;
        if (identifier.rfind(kVariantFolder, 0) != 0) {
            continue;
        }
        const std::string name = identifier.substr(std::strlen(kVariantFolder));
        if (isNumberedVariant(name)) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// Passes one block to the receiver, cut where words begin.
bool handOver(const int16_t* samples, size_t count, const espeak_EVENT* events, size_t blockStart,
              unsigned rate, size_t& lastWord, SpeechReceiver& receiver) {
    size_t done = 0;
    for (; events->type != espeakEVENT_LIST_TERMINATED; ++events) {
        if (events->type != espeakEVENT_WORD || events->text_position < 1) {
            continue;
        }
        const auto offset = static_cast<size_t>(events->text_position) - 1;
        if (lastWord != SIZE_MAX && offset <= lastWord) {
            continue;  // several words for one number, or the last word again at the text's end
        }
        lastWord = offset;
        const size_t at = static_cast<size_t>(std::max(events->audio_position, 0)) * rate / 1000;
        const size_t begin = std::clamp(at > blockStart ? at - blockStart : 0, done, count);
        if (begin > done && !receiver.samples(samples + done, begin - done)) {
            return false;
        }
        done = begin;
        receiver.word(offset);
    }
    return done == count || receiver.samples(samples + done, count - done);
}

/// Whether the library could open the files of the voice that it has changed to, which it does not
/// say: without the voice's own it crashes as it speaks, and without the dictionary it is silent.
bool hasItsFiles() {
    if (*espeak_GetCurrentVoice()->name == '\0') {
        return false;
    }
    const void* number = "1";
    return *espeak_TextToPhonemes(&number, espeakCHARS_UTF8, 0) != '\0';
}

/// The state of one call of `speak`, for the library's callback.
struct Passage {
    SpeechReceiver* receiver;
    unsigned rate;
    size_t madeSamples;
    size_t lastWord;
};

int onSpeech(short* samples, int count, espeak_EVENT* events) {
    auto* passage = static_cast<Passage*>(events->user_data);
    if (samples == nullptr || count < 0 || passage == nullptr) {
        return 0;
    }
    const auto size = static_cast<size_t>(count);
    const bool more = handOver(samples, size, events, passage->madeSamples, passage->rate,
                               passage->lastWord, *passage->receiver);
    passage->madeSamples += size;
    return more ? 0 : 1;
}

}  // namespace

bool EspeakEngine::load(std::string& error) {
    static const int rate =
        espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 0, nullptr, espeakINITIALIZE_DONT_EXIT);
    if (rate <= 0) {
        error = "espeak-ng cannot be started: is its voice data (espeak-ng-data) installed?";
        return false;
    }
    mSampleRate = static_cast<unsigned>(rate);
    espeak_SetSynthCallback(onSpeech);
    const std::vector<std::string> variants = numberedVariants();
    for (const LanguageCode& entry : kLanguages) {
        const std::string plain = plainVoiceFor(entry.code);
        if (plain.empty()) {
            continue;
        }
        mVoices.push_back({{entry.language, entry.code}, plain});
        for (const std::string& variant : variants) {
            const std::string suffix = "+" + variant;
            mVoices.push_back({{entry.language, entry.code + suffix}, plain + suffix});
        }
    }
    return true;
}

std::vector<EngineVoice> EspeakEngine::voices() const {
    std::vector<EngineVoice> offered;
    offered.reserve(mVoices.size());
    for (const Voice& voice : mVoices) {
        offered.push_back(voice.offered);
    }
    return offered;
}

const EspeakEngine::Voice* EspeakEngine::find(EN_VOXTREL_LANGUAGE language, uint32_t number) const {
    uint32_t seen = 0;
    for (const Voice& voice : mVoices) {
        if (voice.offered.language == language && ++seen == number) {
            return &voice;
        }
    }
    return nullptr;
}

void EspeakEngine::setParameter(int parameter, int value, int& current) {
    if (value != current) {
        espeak_SetParameter(static_cast<espeak_PARAMETER>(parameter), value, 0);
        current = value;
    }
}

bool EspeakEngine::apply(const Prosody& prosody) {
    const Voice* voice = find(prosody.language, prosody.voice);
    if (voice == nullptr) {
        return false;
    }
    if (voice != mCurrentVoice) {
        mCurrentVoice = nullptr;
        if (espeak_SetVoiceByName(voice->espeakName.c_str()) != EE_OK || !hasItsFiles()) {
            return false;
        }
        mCurrentVoice = voice;
    }
    constexpr float kPitchSteps = 100.0F / kPitchMax;
    setParameter(espeakRATE, static_cast<int>(prosody.speed), mRate);
    setParameter(espeakPITCH, static_cast<int>(std::lround(prosody.pitch * kPitchSteps)), mPitch);
    setParameter(espeakPUNCTUATION, prosody.punctuation ? espeakPUNCT_ALL : espeakPUNCT_NONE,
                 mPunctuation);
    return true;
}

bool EspeakEngine::speak(const std::string& text, const Prosody& prosody,
                         SpeechReceiver& receiver) {
    if (!apply(prosody)) {
        return false;
    }
    Passage passage = {&receiver, mSampleRate, 0, SIZE_MAX};
    const unsigned flags = espeakCHARS_UTF8 | (prosody.endPause ? espeakENDPAUSE : 0U) |
                           (prosody.markup ? espeakSSML : 0U);
    // The end tag makes the library set its voice again, which leaks when it happens in a sentence
    // that is cut. The library takes the end of the text for the end of all elements.
    const std::string spoken = prosody.markup ? text.substr(0, text.rfind("</speak>")) : text;
    return espeak_Synth(spoken.c_str(), spoken.size() + 1, 0, POS_CHARACTER, 0, flags, nullptr,
                        &passage) == EE_OK;
}

}  // namespace voxtreld
