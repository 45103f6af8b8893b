// SPDX-License-Identifier: Apache-2.0
// The members of Client about what the service can do, and about settings.
#include <array>
#include <cstring>

#include "vocabulary/GlobalConfig.h"
#include "vocabulary/Status.h"
#include "voxtrel/Client.h"
#include "voxtrel/ClientState.h"
#include "voxtrel/session/CheckedCall.h"
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

/// Reads that service; what it does not serve, or does not tell, stays unset.
class Reader {
public:
    Reader(Service& service, unsigned pid) : mService(service), mPid(pid) {}

    std::optional<EN_VOXTREL_LANGUAGE> language() {
        LanguageCode code = {};
        const bool isTold =
            read([&](Service& it) { return it.globalConfig(mPid, GCONF_LANGUAGE, code.data()); });
        code.back() = '\0';
        return isTold ? languageOf(code.data()) : std::nullopt;
    }

    template <typename Number>
    void read(VOXTRELAPI_GCONF key, std::optional<Number>& out) {
        auto number = static_cast<Number>(kNotSet);
        const bool isTold = read([&](Service& it) { return it.globalConfig(mPid, key, &number); });
        if (isTold && number != static_cast<Number>(kNotSet)) {
            out = number;
        }
    }

    /// By a request whose answer is the value.
    std::optional<int> number(int (Service::*request)()) {
        int number = 0;
        const bool isTold = read([&](Service& it) {
            number = (it.*request)();
            return 0;
        });
        return isTold ? std::optional<int>(number) : std::nullopt;
    }

    /// Of the requests that were lost; 0: none was.
    int loss() const { return mLoss; }

private:
    bool read(const Session::Work& request) {
        const CheckedCall call = callChecked(mService, request);
        mLoss = call.isLost() ? call.status() : mLoss;
        return call.status() == 0;
    }

    Service& mService;
    const unsigned mPid;
    int mLoss = 0;
};

int readAll(Service& service, unsigned pid, GlobalSettings& out) {
    Reader reader(service, pid);
    if (const auto language = reader.language()) {
        out.language = tagOf(*language);
    }
    reader.read(GCONF_VOICE, out.voice);
    reader.read(GCONF_SPEED, out.speed);
    reader.read(GCONF_PITCH, out.pitch);
    reader.read(GCONF_VOLUME, out.volume);
    reader.read(GCONF_TTS_VOLUME, out.speechVolume);
    reader.read(GCONF_BG_VOLUME, out.mediaVolume);
    out.verbosity = reader.number(&Service::verbosity);
    const std::optional<int> rate = reader.number(&Service::globalRate);
    if (rate && *rate >= 0 && static_cast<std::uint32_t>(*rate) != kNotSet) {
        out.rate = static_cast<std::uint32_t>(*rate);
    }
    return reader.loss();
}

/// @return as `CheckedCall::status`.
int ask(Service& service, const Session::Work& request) {
    return callChecked(service, request).status();
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
    return ask(service,
               [&](Service& it) { return it.setGlobalConfig(pid, GCONF_LANGUAGE, code.data()); });
}

/// Voices are numbered in the language that the service has by then.
int checkVoice(Service& service, unsigned pid, std::uint32_t voice, const TTS::Capabilities& can) {
    Reader reader(service, pid);
    const auto language = reader.language();
    return language && isVoiceTakenAway(can, *language, voice) ? TTS::STATUS_NOT_SUPPORTED
                                                               : reader.loss();
}

/// Some services answer 0 to a rate that they do not take.
int writeRate(Service& service, unsigned pid, std::uint32_t rate, const TTS::Capabilities& can) {
    const bool isTaken = can.speedSupported && rate >= can.speedMin && rate <= can.speedMax;
    return isTaken ? ask(service, [=](Service& it) { return it.setGlobalRate(pid, rate); })
                   : TTS::STATUS_BAD_PARAMETER;
}

int writeAll(Service& service, unsigned pid, const GlobalSettings& settings,
             const TTS::Capabilities& can) {
    int status = 0;
    const auto writeNumber = [&](VOXTRELAPI_GCONF key, auto value) {
        if (status == 0 && value) {
            status =
                ask(service, [&](Service& it) { return it.setGlobalConfig(pid, key, &*value); });
        }
    };
    if (settings.language) {
        status = writeLanguage(service, pid, languageOf(*settings.language).value_or(LANG_NA), can);
    }
    if (status == 0 && settings.voice) {
        status = checkVoice(service, pid, *settings.voice, can);
    }
    writeNumber(GCONF_VOICE, settings.voice);
    writeNumber(GCONF_SPEED, settings.speed);
    if (status == 0 && settings.rate) {
        status = writeRate(service, pid, *settings.rate, can);
    }
    writeNumber(GCONF_PITCH, settings.pitch);
    writeNumber(GCONF_VOLUME, settings.volume);
    writeNumber(GCONF_TTS_VOLUME, settings.speechVolume);
    writeNumber(GCONF_BG_VOLUME, settings.mediaVolume);
    if (status == 0 && settings.verbosity) {
        status =
            ask(service, [&](Service& it) { return it.setVerbosity(pid, *settings.verbosity); });
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
    return mState->session->perform(
        [pid, settings, can = *can](Service& service) {
            return writeAll(service, pid, settings, can);
        },
        until);
}

Result<bool> Client::isOn(Switch which, std::optional<Milliseconds> deadline) {
    const unsigned pid = mState->session->pid();
    return mState->session->ask<bool>(
        [pid, which](Service& service, bool& on) {
            return ask(service, [&](Service& it) {
                if (which != Switch::Speech) {
                    return it.enabled2(pid, keyOf(which), &on);
                }
                on = it.enabled();
                return 0;
            });
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
