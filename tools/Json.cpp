// SPDX-License-Identifier: Apache-2.0
#include "tools/Json.h"

#include <nlohmann/json.hpp>

namespace voxtrelctl {
namespace {

using nlohmann::ordered_json;

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

std::string dump(const ordered_json& json, int indent) {
    return json.dump(indent, ' ', false, ordered_json::error_handler_t::replace);
}

ordered_json toJson(const Value& value) {
    return std::visit([](const auto& held) { return ordered_json(held); }, value);
}

ordered_json toJson(const std::vector<SettingReport>& report) {
    ordered_json json = ordered_json::object();
    for (const SettingReport& setting : report) {
        ordered_json& entry = json[setting.name];
        entry["value"] = toJson(setting.value);
        if (setting.enabled) {
            entry["enabled"] = *setting.enabled;
        }
        if (!setting.range.empty()) {
            entry["range"] = setting.range;
        }
    }
    return json;
}

ordered_json toJson(const std::vector<LanguageReport>& report) {
    ordered_json json = ordered_json::array();
    for (const LanguageReport& language : report) {
        json.push_back({{"code", language.code},
                        {"voices", language.voices},
                        {"spoken", language.spoken},
                        {"filtered", language.filtered},
                        {"global", language.isGlobal}});
    }
    return json;
}

const char* verdictName(Verdict verdict) {
    switch (verdict) {
        case Verdict::Good:
            return "good";
        case Verdict::Perhaps:
            return "perhaps";
        default:
            return "bad";
    }
}

}  // namespace

std::string eventJson(const Event& event, const std::string& word) {
    ordered_json json = {{"event", eventName(event.kind)}};
    json[event.kind == TTS::EVENT_STATE ? "what" : "utterance"] = event.about;
    switch (event.kind) {
        case TTS::EVENT_STOPPED:
            json["status"] = statusOf(event);
            break;
        case TTS::EVENT_WORD:
            json["offset"] = event.value;
            if (!word.empty()) {
                json["word"] = word;
            }
            break;
        case TTS::EVENT_MARK:
            json["mark"] = event.value;
            break;
        case TTS::EVENT_STATE:
            json["what"] = stateName(event.about);
            json["value"] = event.value;
            break;
        default:
            break;
    }
    return dump(json, kOneLine);
}

std::string connectionJson(const std::string& what) {
    return dump({{"event", what}}, kOneLine);
}

std::string settingsJson(const std::vector<SettingReport>& report) {
    return dump(toJson(report), kIndent);
}

std::string languagesJson(const std::vector<LanguageReport>& report) {
    return dump(toJson(report), kIndent);
}

std::string voicesJson(const std::vector<VoiceReport>& report) {
    ordered_json json = ordered_json::array();
    for (const VoiceReport& voice : report) {
        json.push_back({{"language", voice.language},
                        {"id", voice.id},
                        {"name", voice.name},
                        {"usable", voice.usable}});
    }
    return dump(json, kIndent);
}

std::string statusJson(const StatusReport& report) {
    return dump({{"enabled", report.enabled},
                 {"lock", lockText(report.lock)},
                 {"voices", report.voices},
                 {"settings", toJson(report.settings)},
                 {"languages", toJson(report.languages)}},
                kIndent);
}

std::string profileJson(const std::vector<ProfileEntry>& report) {
    ordered_json json = ordered_json::object();
    for (const ProfileEntry& entry : report) {
        json[entry.key] = toJson(entry.value);
    }
    return dump(json, kIndent);
}

std::string findingsJson(const std::vector<Finding>& report) {
    ordered_json json = ordered_json::array();
    for (const Finding& finding : report) {
        json.push_back({{"subject", finding.subject},
                        {"verdict", verdictName(finding.verdict)},
                        {"seen", finding.seen},
                        {"remedy", finding.remedy}});
    }
    return dump(json, kIndent);
}

}  // namespace voxtrelctl
