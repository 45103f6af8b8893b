// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/testing/FakeSettings.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "vocabulary/Status.h"
#include "voxtrel/session/SpeechRules.h"

namespace voxtrel::testing {
namespace {

constexpr unsigned kVoices = 2;

struct Rule {
    VOXTRELAPI_GCONF key;
    bool isReal;
    const char* name;
    double least;
    double most;
};

constexpr Rule kRules[] = {
    {GCONF_SPEED, false, "speed", 80, 900},
    {GCONF_PITCH, true, "pitch", 0, 400},
    {GCONF_VOICE, false, "voice", 0, kVoices},
    {GCONF_VOLUME, true, "volume", 0, 100},
    {GCONF_BG_VOLUME, false, "media-volume", 0, 100},
    {GCONF_TTS_VOLUME, false, "speech-volume", 0, 100},
};

const Rule* ruleOf(VOXTRELAPI_GCONF key) {
    const auto* found = std::find_if(std::begin(kRules), std::end(kRules),
                                     [key](const Rule& rule) { return rule.key == key; });
    return found == std::end(kRules) ? nullptr : found;
}

/// The value that a switch belongs to.
VOXTRELAPI_GCONF valueOf(VOXTRELAPI_GCONF key) {
    return key % 2 == 1 ? static_cast<VOXTRELAPI_GCONF>(key - 1) : key;
}

double numberAt(const Rule& rule, const void* value) {
    if (rule.isReal) {
        float real = 0;
        std::memcpy(&real, value, sizeof real);
        return real;
    }
    std::uint32_t whole = 0;
    std::memcpy(&whole, value, sizeof whole);
    return whole;
}

void store(const Rule& rule, double number, void* out) {
    if (rule.isReal) {
        const auto real = static_cast<float>(number);
        std::memcpy(out, &real, sizeof real);
    } else {
        const auto whole = static_cast<std::uint32_t>(number);
        std::memcpy(out, &whole, sizeof whole);
    }
}

}  // namespace

FakeSettings::Number* FakeSettings::find(VOXTRELAPI_GCONF key) {
    const auto found = std::find_if(mNumbers.begin(), mNumbers.end(),
                                    [key](const Number& number) { return number.key == key; });
    return found == mNumbers.end() ? nullptr : &*found;
}

const FakeSettings::Number* FakeSettings::find(VOXTRELAPI_GCONF key) const {
    return const_cast<FakeSettings*>(this)->find(key);
}

int FakeSettings::set(VOXTRELAPI_GCONF key, const void* value) {
    if (key == GCONF_LANGUAGE) {
        const EN_VOXTREL_LANGUAGE language = TTS::langStr2Id(static_cast<const char*>(value));
        mLanguage = language == LANG_NA ? mLanguage : language;
        return language == LANG_NA ? TTS::STATUS_NOT_SUPPORTED : TTS::STATUS_OK;
    }
    Number* const number = find(key);
    if (number == nullptr) {
        return TTS::STATUS_BAD_PARAMETER;
    }
    const Rule& rule = *ruleOf(key);
    const double wanted = numberAt(rule, value);
    if (!(wanted >= rule.least && wanted <= rule.most)) {
        return TTS::STATUS_BAD_PARAMETER;
    }
    if (!number->isOn) {
        return TTS::STATUS_NOT_SUPPORTED;
    }
    number->value = wanted;
    return TTS::STATUS_OK;
}

int FakeSettings::get(VOXTRELAPI_GCONF key, void* out) const {
    if (key == GCONF_LANGUAGE) {
        const std::string code = TTS::langId2Str(mLanguage);
        std::memcpy(out, code.c_str(), code.size() + 1);
        return TTS::STATUS_OK;
    }
    const Number* const number = find(key);
    if (number == nullptr) {
        return TTS::STATUS_BAD_PARAMETER;
    }
    store(*ruleOf(key), number->value, out);
    return TTS::STATUS_OK;
}

int FakeSettings::turn(VOXTRELAPI_GCONF key, bool on) {
    Number* const number = key % 2 == 1 ? find(valueOf(key)) : nullptr;
    if (number == nullptr) {
        return TTS::STATUS_BAD_PARAMETER;
    }
    number->isOn = on;
    return TTS::STATUS_OK;
}

int FakeSettings::isOn(VOXTRELAPI_GCONF key, bool& out) const {
    const Number* const number = key % 2 == 1 ? find(valueOf(key)) : nullptr;
    if (number == nullptr) {
        return TTS::STATUS_BAD_PARAMETER;
    }
    out = number->isOn;
    return TTS::STATUS_OK;
}

int FakeSettings::setVerbosity(int verbosity) {
    if (verbosity < 0 || verbosity > 1) {
        return TTS::STATUS_BAD_PARAMETER;
    }
    mVerbosity = verbosity;
    return TTS::STATUS_OK;
}

std::uint32_t FakeSettings::told(VOXTRELAPI_GCONF key) const {
    if (key == GCONF_LANGUAGE) {
        return static_cast<std::uint32_t>(mLanguage);
    }
    const Number* const number = find(valueOf(key));
    if (number == nullptr) {
        return 0;
    }
    return valueOf(key) == key ? static_cast<std::uint32_t>(number->value) : number->isOn;
}

std::string FakeSettings::nameOf(VOXTRELAPI_GCONF key) {
    if (key == GCONF_LANGUAGE) {
        return "language";
    }
    const Rule* const rule = ruleOf(valueOf(key));
    return rule == nullptr ? "" : rule->name;
}

TTS::Capabilities FakeSettings::capabilities() {
    TTS::Capabilities can;
    const auto least = [](VOXTRELAPI_GCONF key) { return ruleOf(key)->least; };
    const auto most = [](VOXTRELAPI_GCONF key) { return ruleOf(key)->most; };
    can.ready = can.permitted = true;
    can.speedSupported = can.pitchSupported = can.volumeSupported = true;
    can.speedMin = static_cast<std::uint32_t>(least(GCONF_SPEED));
    can.speedMax = static_cast<std::uint32_t>(most(GCONF_SPEED));
    can.pitchMin = static_cast<float>(least(GCONF_PITCH));
    can.pitchMax = static_cast<float>(most(GCONF_PITCH));
    can.volumeMin = static_cast<float>(least(GCONF_VOLUME));
    can.volumeMax = static_cast<float>(most(GCONF_VOLUME));
    can.languages.assign(LANG_NA, true);
    can.voicesNum.assign(LANG_NA, kVoices);
    for (int language = LANG_EN_US; language < LANG_NA; ++language) {
        for (unsigned number = 1; number <= kVoices; ++number) {
            TTS::VoiceInfo voice = {static_cast<EN_VOXTREL_LANGUAGE>(language), number, {}};
            const std::string name = tagOf(voice.langId) + "-" + std::to_string(number);
            name.copy(voice.name, sizeof voice.name - 1);
            can.voices.push_back(voice);
        }
    }
    return can;
}

}  // namespace voxtrel::testing
