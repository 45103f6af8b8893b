// SPDX-License-Identifier: Apache-2.0
#include "tools/ServiceSettings.h"

#include <strings.h>

#include <algorithm>
#include <cmath>

#include "tools/Languages.h"

namespace voxtrelctl {
namespace {

using voxtrel::Features;
using voxtrel::Status;
using voxtrel::Voice;

bool isOn(Connection& connection, voxtrel::Switch which) {
    return connection.require(connection.client().isOn(which, connection.left()));
}

Value readSetting(Connection& connection, const Setting& setting) {
    return valueOf(connection.require(connection.client().settings(connection.left())), setting);
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

const char* switchText(bool on) {
    return on ? "on" : "off";
}

std::string describe(const Setting& setting, const Value& value, const Features& can) {
    return std::string(setting.name) + " " + valueText(value) + acceptedText(setting, can);
}

/// What is wrong with a value is told with it; what keeps the client from any change is not.
bool concernsValue(Status status) {
    return status == Status::BadParameter || status == Status::NotSupported;
}

const Voice* findVoice(const std::vector<Voice>& voices, const std::string& tag,
                       const std::string& text) {
    const auto isMeant = [&](const Voice& voice) {
        return voice.language == tag && (strcasecmp(voice.name.c_str(), text.c_str()) == 0 ||
                                         std::to_string(voice.number) == text);
    };
    const auto found = std::find_if(voices.begin(), voices.end(), isMeant);
    return found == voices.end() ? nullptr : &*found;
}

bool contains(const std::vector<std::string>& list, const std::string& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

int countVoices(const std::vector<Voice>& voices, const std::string& tag) {
    return static_cast<int>(std::count_if(
        voices.begin(), voices.end(), [&](const Voice& voice) { return voice.language == tag; }));
}

}  // namespace

void requireAccepted(Connection& connection, const Setting& setting, const Value& value,
                     const Features& can) {
    if (!isAccepted(setting, value, can)) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, describe(setting, value, can));
    }
    if (setting.which && !isOn(connection, *setting.which)) {
        throw Failure(TTS::STATUS_NOT_SUPPORTED, describe(setting, value, can));
    }
}

void writeSetting(Connection& connection, const Setting& setting, const Value& value) {
    voxtrel::Client& client = connection.client();
    const Features can = connection.require(client.features(connection.left()));
    requireAccepted(connection, setting, value, can);
    const auto done = client.change(only(setting, value), connection.left());
    connection.require(done.error(),
                       concernsValue(done.status()) ? describe(setting, value, can) : "");
    const Value kept = readSetting(connection, setting);
    if (!isSame(kept, value)) {
        const std::string text = valueText(kept);
        notKept(setting.name, text.empty() ? "not told" : text, valueText(value));
    }
}

void writeSwitch(Connection& connection, voxtrel::Switch which, const std::string& name, bool on) {
    const auto done = connection.client().turn(which, on, connection.left());
    connection.require(done.error(), concernsValue(done.status()) ? name : "");
    if (isOn(connection, which) != on) {
        const bool isSpeech = which == voxtrel::Switch::Speech;
        notKept(isSpeech ? name : "the switch of " + name, switchText(!on), switchText(on));
    }
}

std::uint32_t voiceNumber(const Features& can, const std::string& tag, const std::string& text) {
    const std::string code = codeOf(tag);
    const std::string detail = "voice " + text + " of " + code;
    if (const Voice* const voice = findVoice(can.voices, tag, text)) {
        return voice->number;
    }
    if (findVoice(can.filteredVoices, tag, text) != nullptr) {
        throw Failure(TTS::STATUS_NOT_SUPPORTED, detail);
    }
    if (text.find_first_not_of("0123456789") == std::string::npos) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, detail);
    }
    throw Failure(TTS::STATUS_BAD_PARAMETER, code + " has no voice \"" + text + "\"",
                  "see voxtrelctl voices " + code);
}

std::string serviceLanguage(Connection& connection) {
    const auto all = connection.require(connection.client().settings(connection.left()));
    if (!all.language) {
        throw Failure(TTS::STATUS_NO_LANGUAGE, "and the service does not tell its own");
    }
    return *all.language;
}

std::vector<SettingReport> surveySettings(Connection& connection,
                                          const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        (void)settingNamed(name);
    }
    voxtrel::Client& client = connection.client();
    const Features can = connection.require(client.features(connection.left()));
    const auto all = connection.require(client.settings(connection.left()));
    std::vector<SettingReport> report;
    const auto add = [&](const Setting& setting) {
        SettingReport entry{setting.name, valueOf(all, setting), {}, rangeText(setting, can)};
        if (setting.which) {
            entry.enabled = isOn(connection, *setting.which);
        }
        report.push_back(std::move(entry));
    };
    for (const std::string& name : names) {
        add(settingNamed(name));
    }
    if (names.empty()) {
        std::for_each(settings().begin(), settings().end(), add);
    }
    return report;
}

std::vector<LanguageReport> surveyLanguages(Connection& connection) {
    voxtrel::Client& client = connection.client();
    const Features can = connection.require(client.features(connection.left()));
    const auto all = connection.require(client.settings(connection.left()));
    std::vector<LanguageReport> report;
    for (const std::string& code : languageCodes()) {
        const std::string tag = tagOf(code);
        const bool isFiltered = contains(can.filteredLanguages, tag);
        report.push_back({code, countVoices(can.voices, tag) + countVoices(can.filteredVoices, tag),
                          isFiltered || contains(can.languages, tag), isFiltered,
                          all.language == tag});
    }
    return report;
}

std::vector<VoiceReport> surveyVoices(Connection& connection) {
    const Features can = connection.require(connection.client().features(connection.left()));
    std::vector<VoiceReport> report;
    for (const std::string& code : languageCodes()) {
        const auto begin = static_cast<std::ptrdiff_t>(report.size());
        for (const auto* voices : {&can.voices, &can.filteredVoices}) {
            for (const Voice& voice : *voices) {
                if (codeOf(voice.language) == code) {
                    report.push_back({code, voice.number, voice.name, voices == &can.voices});
                }
            }
        }
        std::sort(report.begin() + begin, report.end(),
                  [](const VoiceReport& a, const VoiceReport& b) { return a.id < b.id; });
    }
    return report;
}

}  // namespace voxtrelctl
