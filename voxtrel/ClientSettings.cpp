// SPDX-License-Identifier: Apache-2.0
// The members of Client about what the service can do, and about settings.
#include <array>
#include <cstring>

#include "vocabulary/GlobalConfig.h"
#include "vocabulary/Status.h"
#include "voxtrel/Client.h"
#include "voxtrel/ClientState.h"
#include "voxtrel/session/DeviceFilter.h"

namespace voxtrel {
namespace {

using Service = TTS::ITextToSpeechFestival;

/// What a service that keeps a value to itself gives.
constexpr std::uint32_t kNotSet = WireSettings::kNotSet;

/// The code of a language as it travels, with its NUL.
using LanguageCode = std::array<char, 256>;

VOXTRELAPI_GCONF keyOf(Switch which) {
    switch (which) {
        case Switch::Speed:
            return GCONF_SPEED_ENABLE;
        case Switch::Pitch:
            return GCONF_PITCH_ENABLE;
        case Switch::Voice:
            return GCONF_VOICE_ENABLE;
        case Switch::Volume:
            return GCONF_VOLUME_ENABLE;
        case Switch::MediaVolume:
            return GCONF_BG_VOLUME_ENABLE;
        default:
            return GCONF_TTS_VOLUME_ENABLE;
    }
}

template <typename Number>
void read(Service& service, unsigned pid, VOXTRELAPI_GCONF key, std::optional<Number>& out) {
    auto number = static_cast<Number>(kNotSet);
    if (service.globalConfig(pid, key, &number) == 0 && number != static_cast<Number>(kNotSet)) {
        out = number;
    }
}

std::optional<EN_VOXTREL_LANGUAGE> readLanguage(Service& service, unsigned pid) {
    LanguageCode code = {};
    const int status = service.globalConfig(pid, GCONF_LANGUAGE, code.data());
    code.back() = '\0';
    return status == 0 ? languageOf(code.data()) : std::nullopt;
}

int readAll(Service& service, unsigned pid, GlobalSettings& out) {
    if (const auto language = readLanguage(service, pid)) {
        out.language = tagOf(*language);
    }
    read(service, pid, GCONF_VOICE, out.voice);
    read(service, pid, GCONF_SPEED, out.speed);
    read(service, pid, GCONF_PITCH, out.pitch);
    read(service, pid, GCONF_VOLUME, out.volume);
    read(service, pid, GCONF_TTS_VOLUME, out.speechVolume);
    read(service, pid, GCONF_BG_VOLUME, out.mediaVolume);
    out.verbosity = service.verbosity();
    const int rate = service.globalRate();
    if (rate >= 0 && static_cast<std::uint32_t>(rate) != kNotSet) {
        out.rate = static_cast<std::uint32_t>(rate);
    }
    return 0;
}

int writeLanguage(Service& service, unsigned pid, EN_VOXTREL_LANGUAGE language,
                  const TTS::Capabilities& can) {
    const auto index = static_cast<std::size_t>(language);
    if (index >= can.languages.size() || !can.languages[index]) {
        return TTS::STATUS_NOT_SUPPORTED;
    }
    LanguageCode code = {};
    const std::string text = TTS::langId2Str(language);
    std::memcpy(code.data(), text.data(), text.size());
    return service.setGlobalConfig(pid, GCONF_LANGUAGE, code.data());
}

/// Voices are numbered in the language that the service has by then.
int checkVoice(Service& service, unsigned pid, std::uint32_t voice, const TTS::Capabilities& can) {
    const auto language = readLanguage(service, pid);
    return language && isVoiceTakenAway(can, *language, voice) ? TTS::STATUS_NOT_SUPPORTED
                                                               : TTS::STATUS_OK;
}

/// Some services answer 0 to a rate that they do not take.
int writeRate(Service& service, unsigned pid, std::uint32_t rate, const TTS::Capabilities& can) {
    const bool isTaken = can.speedSupported && rate >= can.speedMin && rate <= can.speedMax;
    return isTaken ? service.setGlobalRate(pid, rate) : TTS::STATUS_BAD_PARAMETER;
}

int writeAll(Service& service, unsigned pid, const GlobalSettings& settings,
             const TTS::Capabilities& can) {
    int status = 0;
    const auto write = [&](VOXTRELAPI_GCONF key, auto value) {
        if (status == 0 && value) {
            status = service.setGlobalConfig(pid, key, &*value);
        }
    };
    if (settings.language) {
        status = writeLanguage(service, pid, languageOf(*settings.language).value_or(LANG_NA), can);
    }
    if (status == 0 && settings.voice) {
        status = checkVoice(service, pid, *settings.voice, can);
    }
    write(GCONF_VOICE, settings.voice);
    write(GCONF_SPEED, settings.speed);
    if (status == 0 && settings.rate) {
        status = writeRate(service, pid, *settings.rate, can);
    }
    write(GCONF_PITCH, settings.pitch);
    write(GCONF_VOLUME, settings.volume);
    write(GCONF_TTS_VOLUME, settings.speechVolume);
    write(GCONF_BG_VOLUME, settings.mediaVolume);
    if (status == 0 && settings.verbosity) {
        status = service.setVerbosity(pid, *settings.verbosity);
    }
    return status;
}

}  // namespace

Result<Features> Client::features(std::optional<Milliseconds> deadline) {
    return mState->session->features(mState->deadline(deadline));
}

Result<GlobalSettings> Client::settings(std::optional<Milliseconds> deadline) {
    const unsigned pid = mState->session->pid();
    return mState->session->ask<GlobalSettings>(
        [pid](Service& service, GlobalSettings& out) { return readAll(service, pid, out); },
        mState->deadline(deadline));
}

Result<void> Client::change(const GlobalSettings& settings, std::optional<Milliseconds> deadline) {
    const auto until = mState->deadline(deadline);
    const Result<TTS::Capabilities> can = mState->session->capabilities(until);
    if (!can) {
        return can.error();
    }
    const unsigned pid = mState->session->pid();
    return mState->session->request(
        [pid, settings, can = *can](Service& service) {
            return writeAll(service, pid, settings, can);
        },
        until);
}

Result<bool> Client::isOn(Switch which, std::optional<Milliseconds> deadline) {
    const unsigned pid = mState->session->pid();
    return mState->session->ask<bool>(
        [pid, which](Service& service, bool& on) {
            if (which == Switch::Speech) {
                on = service.enabled();
                return 0;
            }
            return service.enabled2(pid, keyOf(which), &on);
        },
        mState->deadline(deadline));
}

Result<void> Client::turn(Switch which, bool on, std::optional<Milliseconds> deadline) {
    const unsigned pid = mState->session->pid();
    return mState->session->request(
        [pid, which, on](Service& service) {
            return which == Switch::Speech ? service.setEnable(pid, on)
                                           : service.setEnable2(pid, keyOf(which), on);
        },
        mState->deadline(deadline));
}

Result<void> Client::resetSettings(std::optional<Milliseconds> deadline) {
    const unsigned pid = mState->session->pid();
    return mState->session->request([pid](Service& service) { return service.factoryReset(pid); },
                                    mState->deadline(deadline));
}

}  // namespace voxtrel
