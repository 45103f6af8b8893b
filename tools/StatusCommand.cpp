// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "tools/Commands.h"
#include "tools/Json.h"
#include "tools/Languages.h"
#include "tools/Render.h"
#include "tools/ServiceSettings.h"

namespace voxtrelctl {
namespace {

template <typename Report>
void print(const Options& options, Terminal& terminal, const Report& report,
           std::string (*json)(const Report&), std::string (*text)(const Report&)) {
    options.json ? terminal.line(json(report)) : terminal.print(text(report));
}

}  // namespace

int runStatus(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    connection.connect();
    voxtrel::Client& client = connection.client();
    StatusReport report;
    report.enabled = connection.require(client.isOn(voxtrel::Switch::Speech, connection.left()));
    report.lock = connection.require(client.lockState(connection.left()));
    report.settings = surveySettings(connection, {});
    report.languages = surveyLanguages(connection);
    report.voices = surveyVoices(connection).size();
    print(options, terminal, report, &statusJson, &statusPage);
    return 0;
}

int runLanguages(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    connection.connect();
    print(options, terminal, surveyLanguages(connection), &languagesJson, &languagesTable);
    return 0;
}

int runVoices(const Options& options, Terminal& terminal) {
    const std::string only = options.language.empty() ? "" : requireLanguage(options.language);
    Connection connection(options, terminal);
    connection.connect();
    std::vector<VoiceReport> voices = surveyVoices(connection);
    const auto isOther = [&](const VoiceReport& voice) {
        return !only.empty() && voice.language != only;
    };
    voices.erase(std::remove_if(voices.begin(), voices.end(), isOther), voices.end());
    print(options, terminal, voices, &voicesJson, &voicesTable);
    return 0;
}

int runGet(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    connection.connect();
    print(options, terminal, surveySettings(connection, options.words), &settingsJson,
          &settingsTable);
    return 0;
}

}  // namespace voxtrelctl
