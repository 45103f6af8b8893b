// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "tools/Commands.h"
#include "tools/Errors.h"
#include "tools/Json.h"
#include "tools/Lock.h"
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
    Session session(terminal);
    const StatusReport report{session.client()->enabled(), lockState(session),
                              surveySettings(session, {}), surveyLanguages(session),
                              session.capabilities().voices.size()};
    session.confirm();
    print(options, terminal, report, &statusJson, &statusPage);
    return 0;
}

int runLanguages(const Options& options, Terminal& terminal) {
    Session session(terminal);
    const std::vector<LanguageReport> report = surveyLanguages(session);
    session.confirm();
    print(options, terminal, report, &languagesJson, &languagesTable);
    return 0;
}

int runVoices(const Options& options, Terminal& terminal) {
    const std::string& only = options.language;
    if (!only.empty() && TTS::langStr2Id(only) == LANG_NA) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, "there is no language \"" + only + "\"",
                      "voxtrelctl languages lists them");
    }
    Session session(terminal);
    std::vector<VoiceReport> voices = surveyVoices(session);
    voices.erase(std::remove_if(voices.begin(), voices.end(),
                                [&only](const VoiceReport& voice) {
                                    return !only.empty() && voice.language != only;
                                }),
                 voices.end());
    print(options, terminal, voices, &voicesJson, &voicesTable);
    return 0;
}

int runGet(const Options& options, Terminal& terminal) {
    Session session(terminal);
    const std::vector<SettingReport> report = surveySettings(session, options.words);
    session.confirm();
    print(options, terminal, report, &settingsJson, &settingsTable);
    return 0;
}

}  // namespace voxtrelctl
