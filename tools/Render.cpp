// SPDX-License-Identifier: Apache-2.0
#include "tools/Render.h"

#include <algorithm>

namespace voxtrelctl {
namespace {

using Row = std::vector<std::string>;

constexpr size_t kGap = 2;

/// Cells under each other; the last cell of a row is not padded.
std::string table(const std::vector<Row>& rows) {
    std::vector<size_t> widths;
    for (const Row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    std::string text;
    for (const Row& row : rows) {
        std::string line;
        for (size_t column = 0; column < row.size(); ++column) {
            line += row[column];
            line.append(widths[column] - row[column].size() + kGap, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

std::string languageNote(const LanguageReport& language) {
    if (language.filtered) {
        return "taken away by the device's filter";
    }
    if (!language.spoken) {
        return "not spoken by the service";
    }
    return language.isGlobal ? "the service's language" : "";
}

/// A number is what the service answers, a language code without a letter is no answer.
std::string answeredText(const Value& value) {
    const std::string text = valueText(value);
    return text.empty() ? "not told" : text;
}

std::string enabledText(const SettingReport& setting) {
    if (!setting.enabled) {
        return "";
    }
    return *setting.enabled ? "enabled" : "disabled";
}

const char* mark(Verdict verdict) {
    switch (verdict) {
        case Verdict::Good:
            return "ok";
        case Verdict::Perhaps:
            return "??";
        default:
            return "!!";
    }
}

}  // namespace

std::string settingsTable(const std::vector<SettingReport>& report) {
    std::vector<Row> rows;
    rows.reserve(report.size());
    for (const SettingReport& setting : report) {
        rows.push_back(
            {setting.name, answeredText(setting.value), enabledText(setting), setting.range});
    }
    return table(rows);
}

std::string languagesTable(const std::vector<LanguageReport>& report) {
    std::vector<Row> rows;
    rows.reserve(report.size());
    for (const LanguageReport& language : report) {
        rows.push_back(
            {language.code,
             std::to_string(language.voices) + (language.voices == 1 ? " voice" : " voices"),
             languageNote(language)});
    }
    return table(rows);
}

std::string voicesTable(const std::vector<VoiceReport>& report) {
    std::vector<Row> rows;
    rows.reserve(report.size());
    for (const VoiceReport& voice : report) {
        rows.push_back({voice.language, std::to_string(voice.id), voice.name,
                        voice.usable ? "" : "taken away by the device's filter"});
    }
    return table(rows);
}

std::string statusPage(const StatusReport& report) {
    std::string page = table({{"service", "ready"},
                              {"speech", report.enabled ? "enabled" : "disabled"},
                              {"lock", lockText(report.lock)},
                              {"voices", std::to_string(report.voices)}});
    page += "\nSettings of the service (value, switch, range):\n" + settingsTable(report.settings);
    return page + "\nLanguages:\n" + languagesTable(report.languages);
}

std::string profileText(const std::vector<ProfileEntry>& report) {
    std::string text;
    for (const ProfileEntry& entry : report) {
        text += entry.key + "=" + valueText(entry.value) + "\n";
    }
    return text;
}

std::string findingsPage(const std::vector<Finding>& report) {
    std::vector<Row> rows;
    rows.reserve(report.size());
    for (const Finding& finding : report) {
        rows.push_back({mark(finding.verdict), finding.subject,
                        finding.seen + (finding.remedy.empty() ? "" : "; " + finding.remedy)});
    }
    return table(rows);
}

}  // namespace voxtrelctl
