// SPDX-License-Identifier: Apache-2.0
#include "tools/Doctor.h"

#include "tools/Connection.h"
#include "tools/Owner.h"

namespace voxtrelctl {
namespace {

using voxtrel::Diagnosis;
using voxtrel::LockState;
using voxtrel::Peer;
using voxtrel::Reach;

Finding good(const std::string& subject, const std::string& seen) {
    return {subject, Verdict::Good, seen, "", 0};
}

std::string processOf(const Peer& peer) {
    return peer.process != 0 ? "process " + std::to_string(peer.process) : "";
}

std::string managerPlace(const Diagnosis& seen) {
    std::string place = "running";
    for (const std::string& part : {seen.path, seen.transport, processOf(seen.manager)}) {
        place += part.empty() ? "" : ", " + part;
    }
    return place;
}

/// What must be so before the service can be asked for more, in this order.
struct Step {
    const char* subject;
    Reach stopsAt;     ///< or before
    std::string good;  ///< empty: not told
};

std::vector<Step> stepsOf(const Diagnosis& seen) {
    const std::string process = processOf(seen.service);
    return {
        {"service manager", Reach::ManagerSilent, managerPlace(seen)},
        {"service", Reach::NoService, "registered" + (process.empty() ? "" : ", " + process)},
        {"owner", Reach::NotTrusted, seen.service.user ? ownerName(*seen.service.user) : ""},
        {"answer", Reach::ServiceSilent, "the service answers"},
        {"voices", Reach::Loading, "loaded"},
        {"permission", Reach::NotAdmitted, "this user is admitted"},
    };
}

/// In place of the advice to ask this very command.
constexpr const char* kStartIt = "start it with: voxtreld, or with: voxtrelctl --spawn status";

std::vector<Finding> wayTo(const Diagnosis& seen) {
    std::vector<Finding> findings;
    for (const Step& step : stepsOf(seen)) {
        if (seen.reach <= step.stopsAt) {
            const Problem problem = problemIn(seen);
            const bool isAbsent = problem.what.empty();
            findings.push_back({step.subject, Verdict::Bad, isAbsent ? "absent" : problem.what,
                                isAbsent ? kStartIt : problem.remedy, problem.code});
            break;
        }
        if (!step.good.empty()) {
            findings.push_back(good(step.subject, step.good));
        }
    }
    return findings;
}

Finding speech(const Symptoms& symptoms) {
    if (symptoms.enabled) {
        return good("speech", "enabled");
    }
    return {"speech", Verdict::Bad, "disabled", meaningOf(TTS::STATUS_DISABLED).remedy,
            TTS::STATUS_DISABLED};
}

Finding lock(const Symptoms& symptoms) {
    const char* seen = lockText(symptoms.lock);
    switch (symptoms.lock) {
        case LockState::Free:
            return good("lock", seen);
        case LockState::Unknown:
            return {"lock", Verdict::Perhaps, seen,
                    "the service does not tell it, or not to this user; its log may", 0};
        default:
            return {"lock", Verdict::Bad, seen, meaningOf(TTS::STATUS_LOCKED).remedy,
                    TTS::STATUS_LOCKED};
    }
}

Finding events(const Symptoms& symptoms) {
    if (symptoms.way.takesAnyPause) {
        return {"events", Verdict::Perhaps,
                "the service sends them, but takes a pause of 49 days and may be silent for as "
                "long",
                "it must refuse that at once; docs/writing-a-service.md has the rules", 0};
    }
    if (symptoms.sendsEvents) {
        return good("events", "the service sends them");
    }
    return {
        "events", Verdict::Perhaps, "none came of a pause that is too long",
        "what is said may be heard, but nobody is told; docs/writing-a-service.md has the rules",
        0};
}

Finding language(const LanguageReport& report) {
    const Verdict severity = report.isGlobal ? Verdict::Bad : Verdict::Perhaps;
    if (report.filtered) {
        return {"language", severity, report.code + " is taken away by the device's filter",
                "choose another with --lang or voxtrelctl set language, or change the filter",
                TTS::STATUS_NOT_SUPPORTED};
    }
    return {"language", severity, "the service does not speak " + report.code,
            "install the engine's data for it, or choose another language",
            TTS::STATUS_NOT_SUPPORTED};
}

std::vector<Finding> languages(const Symptoms& symptoms) {
    std::vector<Finding> findings;
    std::string spoken;
    bool hasGlobal = false;
    for (const LanguageReport& report : symptoms.languages) {
        hasGlobal = hasGlobal || report.isGlobal;
        if (report.spoken && !report.filtered) {
            spoken += (spoken.empty() ? "" : ", ") + report.code;
        } else {
            findings.push_back(language(report));
        }
    }
    if (!hasGlobal) {
        findings.push_back({"language", Verdict::Perhaps, "the service does not tell its own",
                            "name one with --lang", 0});
    }
    if (!spoken.empty()) {
        findings.insert(findings.begin(), good("languages", spoken));
    }
    return findings;
}

/// The settings that silence speech when they are 0, and those that are switched off.
std::vector<Finding> settingsIn(const Symptoms& symptoms) {
    std::vector<Finding> findings;
    for (const SettingReport& setting : symptoms.settings) {
        const bool counts = setting.name == "volume" || setting.name == "tts-volume";
        const std::string value = valueText(setting.value);
        if (counts && value == "0") {
            findings.push_back({setting.name, Verdict::Bad, "is 0",
                                "raise it with: voxtrelctl set " + setting.name + " 100", 0});
        } else if (counts) {
            findings.push_back(good(setting.name, value));
        }
        if (!setting.enabled.value_or(true)) {
            findings.push_back({setting.name, Verdict::Perhaps,
                                "switched off, so that nobody can choose it",
                                "switch it on with: voxtrelctl enable " + setting.name, 0});
        }
    }
    return findings;
}

Finding soundCard(const Symptoms& symptoms) {
    if (symptoms.hasSoundCard) {
        return good("sound card", "present");
    }
    return {"sound card", Verdict::Perhaps, "none on this machine",
            "have it write a file instead: voxtreld --sink wav:FILE", 0};
}

void append(std::vector<Finding>& findings, const std::vector<Finding>& more) {
    findings.insert(findings.end(), more.begin(), more.end());
}

}  // namespace

std::vector<Finding> findingsOf(const Symptoms& symptoms) {
    std::vector<Finding> findings = wayTo(symptoms.way);
    if (symptoms.way.reach == Reach::Connected) {
        append(findings, {speech(symptoms), lock(symptoms), events(symptoms)});
        append(findings, languages(symptoms));
        append(findings, settingsIn(symptoms));
    }
    findings.push_back(soundCard(symptoms));
    return findings;
}

}  // namespace voxtrelctl
