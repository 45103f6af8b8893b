// SPDX-License-Identifier: Apache-2.0
#include "tools/ServiceSettings.h"

#include <cmath>
#include <cstring>

#include "tools/Errors.h"
#include "vocabulary/Language.h"

namespace voxtrelctl {
namespace {

constexpr size_t kLanguageRoom = 16;  ///< what the library fills at most

bool isRate(const Setting& setting) {
    return std::string(setting.name) == "rate";
}

std::string readLanguage(Session& session) {
    char code[kLanguageRoom + 1] = {};
    check(session.client()->globalConfig(GCONF_LANGUAGE, code), "reading the language");
    return code;
}

template <typename Number>
Number readNumber(Session& session, const Setting& setting) {
    Number number = 0;
    check(session.client()->globalConfig(setting.key, &number),
          std::string("reading ") + setting.name);
    return number;
}

std::string rejection(const Session& session, const Setting& setting, const Value& value) {
    return std::string(setting.name) + " " + valueText(value) +
           acceptedText(setting, session.capabilities());
}

/// The same value, but for what a service may round off.
bool isSame(const Value& one, const Value& other) {
    const auto* left = std::get_if<float>(&one);
    const auto* right = std::get_if<float>(&other);
    return left != nullptr && right != nullptr ? std::fabs(*left - *right) < 1 : one == other;
}

/// A service can answer 0 and do nothing.
[[noreturn]] void notKept(const std::string& name, const std::string& is, const std::string& set) {
    throw Failure(TTS::STATUS_NOT_SUPPORTED, name + " is " + is + " after it was set to " + set,
                  "the service took it and did not keep it; see its own log");
}

const char* switchText(bool enable) {
    return enable ? "on" : "off";
}

/// The library reports a rate that it rejects as success, so it is checked before.
bool takesRate(const Session& session, uint32_t rate) {
    const TTS::Capabilities& can = session.capabilities();
    return can.speedSupported && can.speedMin <= rate && rate <= can.speedMax;
}

int send(Session& session, const Setting& setting, Value value) {
    const ClientUse client = session.client();
    if (auto* code = std::get_if<std::string>(&value)) {
        return client->setGlobalConfig(setting.key, code->data());
    }
    if (auto* real = std::get_if<float>(&value)) {
        return client->setGlobalConfig(setting.key, real);
    }
    auto& whole = std::get<uint32_t>(value);
    if (setting.key != 0) {
        return client->setGlobalConfig(setting.key, &whole);
    }
    if (isRate(setting)) {
        return takesRate(session, whole) ? client->setGlobalRate(whole) : TTS::STATUS_BAD_PARAMETER;
    }
    return whole <= 1 ? client->setVerbosity(static_cast<int>(whole)) : TTS::STATUS_BAD_PARAMETER;
}

}  // namespace

Value readSetting(Session& session, const Setting& setting) {
    if (setting.type == ValueType::Language) {
        return readLanguage(session);
    }
    if (setting.key == 0) {
        const ClientUse client = session.client();
        return static_cast<uint32_t>(isRate(setting) ? client->globalRate() : client->verbosity());
    }
    if (setting.type == ValueType::Float) {
        return readNumber<float>(session, setting);
    }
    return readNumber<uint32_t>(session, setting);
}

void writeSetting(Session& session, const Setting& setting, const Value& value) {
    const int status = send(session, setting, value);
    if (status != 0) {
        throw Failure(status, rejection(session, setting, value));
    }
    const Value kept = readSetting(session, setting);
    if (!isSame(kept, value)) {
        const std::string text = valueText(kept);
        notKept(setting.name, text.empty() ? "not told" : text, valueText(value));
    }
}

bool readFlag(Session& session, const Setting& setting) {
    bool flag = false;
    check(session.client()->enabled2(setting.flag, &flag),
          std::string("reading the switch of ") + setting.name);
    return flag;
}

void writeFlag(Session& session, const Setting& setting, bool enable) {
    check(session.client()->setEnable2(setting.flag, enable), setting.name);
    if (readFlag(session, setting) != enable) {
        notKept(std::string("the switch of ") + setting.name, switchText(!enable),
                switchText(enable));
    }
}

void writeVerbosity(Session& session, int verbosity) {
    check(session.client()->setVerbosity(verbosity), "verbosity");
    const int kept = session.client()->verbosity();
    if (kept != verbosity) {
        notKept("verbosity", std::to_string(kept), std::to_string(verbosity));
    }
}

void writeSpeech(Session& session, bool enable) {
    check(session.client()->setEnable(enable), "speech");
    if (session.client()->enabled() != enable) {
        notKept("speech", switchText(!enable), switchText(enable));
    }
}

EN_VOXTREL_LANGUAGE globalLanguage(Session& session) {
    return TTS::langStr2Id(readLanguage(session));
}

std::vector<SettingReport> surveySettings(Session& session, const std::vector<std::string>& names) {
    std::vector<const Setting*> wanted;
    wanted.reserve(settings().size());
    for (const std::string& name : names) {
        wanted.push_back(&settingNamed(name));
    }
    if (names.empty()) {
        for (const Setting& setting : settings()) {
            wanted.push_back(&setting);
        }
    }
    std::vector<SettingReport> report;
    report.reserve(wanted.size());
    for (const Setting* setting : wanted) {
        SettingReport entry{setting->name,
                            readSetting(session, *setting),
                            {},
                            rangeText(*setting, session.capabilities())};
        if (hasFlag(*setting)) {
            entry.enabled = readFlag(session, *setting);
        }
        report.push_back(std::move(entry));
    }
    return report;
}

std::vector<LanguageReport> surveyLanguages(Session& session) {
    const TTS::Capabilities& can = session.capabilities();
    const EN_VOXTREL_LANGUAGE global = globalLanguage(session);
    std::vector<LanguageReport> report;
    for (size_t id = 0; id < can.languages.size() && id < can.voicesNum.size(); ++id) {
        const auto language = static_cast<EN_VOXTREL_LANGUAGE>(id);
        report.push_back({TTS::langId2Str(language), can.voicesNum[id], can.languages[id],
                          session.client()->languageByFilter(language) != 0, language == global});
    }
    return report;
}

std::vector<VoiceReport> surveyVoices(Session& session) {
    std::vector<VoiceReport> report;
    for (TTS::VoiceInfo voice : session.capabilities().voices) {
        bool listed = false;
        const bool restricted = session.client()->supportVoiceByFilter(&voice, &listed) != 0;
        const std::string name(voice.name, strnlen(voice.name, sizeof(voice.name)));
        report.push_back({TTS::langId2Str(voice.langId), voice.id, name, !restricted || listed});
    }
    return report;
}

}  // namespace voxtrelctl
