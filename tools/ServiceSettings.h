// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SERVICESETTINGS_H
#define VOXTREL_TOOLS_SERVICESETTINGS_H

#include <string>
#include <vector>

#include "tools/Connection.h"
#include "tools/Reports.h"

namespace voxtrelctl {

// What the service has and takes, by the names of the command line. All throw Failure. Called on:
// the main thread.

// What writes reads again, and throws Failure(-9) when the service has not kept it.

/// Throws Failure(-3), with the range, for a value out of it.
void writeSetting(Connection& connection, const Setting& setting, const Value& value);
void writeSwitch(Connection& connection, voxtrel::Switch which, const std::string& name, bool on);

/// Throws Failure: -3, with the range, for a value out of it; -9 while the setting is off.
void requireAccepted(Connection& connection, const Setting& setting, const Value& value,
                     const voxtrel::Features& can);

/// The number of the voice with that name, whatever its case, or number, in the language with that
/// tag. Throws Failure: -3 for none, -9 for one that the device's filter takes away.
std::uint32_t voiceNumber(const voxtrel::Features& can, const std::string& tag,
                          const std::string& text);

/// The service's own language, as a tag. Throws Failure(-11) when it does not tell it.
std::string serviceLanguage(Connection& connection);

/// The settings of these names, or all; throws -3 for a name that there is not.
std::vector<SettingReport> surveySettings(Connection& connection,
                                          const std::vector<std::string>& names);

std::vector<LanguageReport> surveyLanguages(Connection& connection);
std::vector<VoiceReport> surveyVoices(Connection& connection);

}  // namespace voxtrelctl

#endif
