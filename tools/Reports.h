// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_REPORTS_H
#define VOXTREL_TOOLS_REPORTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/Settings.h"

namespace voxtrelctl {

/// A setting with what the service has for it.
struct SettingReport {
    std::string name;
    Value value;
    std::optional<bool> enabled;  ///< nothing: the setting has no flag
    std::string range;            ///< "80 to 450"; empty: not told
};

struct LanguageReport {
    std::string code;
    int voices = 0;
    bool spoken = false;    ///< the service speaks it
    bool filtered = false;  ///< the device's filter takes it away
    bool isGlobal = false;  ///< the service's global language
};

struct VoiceReport {
    std::string language;
    uint32_t id = 0;  ///< what --voice and `set voice` take
    std::string name;
    bool usable = false;  ///< passes the device's filter
};

/// The state of the lock for a person, and in JSON.
constexpr const char* lockText(voxtrel::LockState state) {
    return state == voxtrel::LockState::Free      ? "free"
           : state == voxtrel::LockState::Unknown ? "not told"
                                                  : "held by another client";
}

struct StatusReport {
    bool enabled = false;
    voxtrel::LockState lock = voxtrel::LockState::Unknown;
    std::vector<SettingReport> settings;
    std::vector<LanguageReport> languages;
    size_t voices = 0;
};

/// One line of a profile file: key and value as the file spells them.
struct ProfileEntry {
    std::string key;
    Value value;
};

/// How a finding bears on the silence.
enum class Verdict {
    Good,     ///< not the cause
    Perhaps,  ///< a cause for some callers, or under some conditions
    Bad,      ///< a cause
};

/// One answer of `doctor`.
struct Finding {
    std::string subject;  ///< "service manager"
    Verdict verdict = Verdict::Good;
    std::string seen;
    std::string remedy;  ///< what to do; empty when it is good
    int code = 0;        ///< the status that an application gets for it; 0: none
};

}  // namespace voxtrelctl

#endif
