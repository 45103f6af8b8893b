// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_RENDER_H
#define VOXTREL_TOOLS_RENDER_H

#include <string>
#include <vector>

#include "tools/Reports.h"

namespace voxtrelctl {

// The reports as tables for a person; every line ends with a line end.

std::string settingsTable(const std::vector<SettingReport>& report);
std::string languagesTable(const std::vector<LanguageReport>& report);
std::string voicesTable(const std::vector<VoiceReport>& report);
std::string statusPage(const StatusReport& report);
std::string profileText(const std::vector<ProfileEntry>& report);
std::string findingsPage(const std::vector<Finding>& report);

}  // namespace voxtrelctl

#endif
