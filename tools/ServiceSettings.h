// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SERVICESETTINGS_H
#define VOXTREL_TOOLS_SERVICESETTINGS_H

#include <string>
#include <vector>

#include "tools/Reports.h"
#include "tools/Session.h"
#include "tools/Settings.h"

namespace voxtrelctl {

// What the service has and takes, by the names of the command line. All throw Failure with the
// status of the client library. Called on: the main thread.

Value readSetting(Session& session, const Setting& setting);

// What writes reads again, and throws Failure(-9) when the service has not kept it.

/// Throws -3 for a rate that the library would reject silently.
void writeSetting(Session& session, const Setting& setting, const Value& value);

bool readFlag(Session& session, const Setting& setting);
void writeFlag(Session& session, const Setting& setting, bool enable);

void writeVerbosity(Session& session, int verbosity);

/// Switches speech as a whole.
void writeSpeech(Session& session, bool enable);

/// The service's global language; LANG_NA when it has none of ours.
EN_VOXTREL_LANGUAGE globalLanguage(Session& session);

/// The settings of these names, or all; throws -3 for a name that there is not.
std::vector<SettingReport> surveySettings(Session& session, const std::vector<std::string>& names);

std::vector<LanguageReport> surveyLanguages(Session& session);
std::vector<VoiceReport> surveyVoices(Session& session);

}  // namespace voxtrelctl

#endif
