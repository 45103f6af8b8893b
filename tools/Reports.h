// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_REPORTS_H
#define VOXTREL_TOOLS_REPORTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/Settings.h"
#include "vocabulary/Capabilities.h"

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
    int voices = 0;         ///< the service's count
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

/// What the service does with a pause that it must refuse by an event.
struct EventReport {
    bool sendsEvents = false;
    bool takesAnyPause = false;
};

/// Who has the service lock, as far as the service has told.
enum class LockState { Free, OfAnother, Unknown };

/// The state for a person, and in JSON.
constexpr const char* lockText(LockState state) {
    return state == LockState::Free        ? "free"
           : state == LockState::OfAnother ? "held by another client"
                                           : "not told";
}

struct StatusReport {
    bool enabled = false;
    LockState lock = LockState::Unknown;
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
