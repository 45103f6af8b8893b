// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_JSON_H
#define VOXTREL_TOOLS_JSON_H

#include <string>
#include <vector>

#include "tools/Events.h"
#include "tools/Reports.h"

namespace voxtrelctl {

// The reports as JSON text, without a line end. Lists and objects are indented for people; events
// are one line each, so that a reader can take them as they come. Bytes that are not UTF-8 become
// U+FFFD. docs/voxtrelctl.md shows one of each.

/// {"event": "word", "utterance": 1, "offset": 7, "word": "world."} and its like.
std::string eventJson(const Event& event, const std::string& word);

/// {"event": "connected"}, where `what` is "connected" or "died".
std::string connectionJson(const std::string& what);

/// {"speed": {"value": 300, "enabled": true, "range": "80 to 450"}, ...}
std::string settingsJson(const std::vector<SettingReport>& report);

/// [{"code": "en_US", "voices": 10, "spoken": true, "filtered": false, "global": true}, ...]
std::string languagesJson(const std::vector<LanguageReport>& report);

/// [{"language": "en_US", "id": 1, "name": "...", "usable": true}, ...]
std::string voicesJson(const std::vector<VoiceReport>& report);

/// {"enabled": true, "lock": "free", "voices": 20, "settings": {...}, "languages": [...]}
std::string statusJson(const StatusReport& report);

/// {"speed": 300, "lang": "en_US", ...}
std::string profileJson(const std::vector<ProfileEntry>& report);

/// [{"subject": "service", "verdict": "bad", "seen": "...", "remedy": "..."}, ...]
std::string findingsJson(const std::vector<Finding>& report);

}  // namespace voxtrelctl

#endif
