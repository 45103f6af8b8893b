// SPDX-License-Identifier: Apache-2.0
#include "tools/Doctor.h"

#include <algorithm>

#include "tools/Errors.h"

namespace voxtrelctl {
namespace {

struct Step {
    Reach stopsAt;
    int code;
    const char* subject;
    const char* good;
    const char* bad;
    const char* remedy;
};

/// What must be so before the service can be asked for more, in this order.
constexpr Step kSteps[] = {
    {Reach::NoServiceManager, TTS::STATUS_SERVICE_NOT_FOUND, "service manager", "running",
     "none that this user can reach",
     "start it with: voxtrel-servicemanager (same VOXTREL_BINDER_SOCKET as here), or ask whoever "
     "runs it to let this user in"},
    {Reach::NoService, TTS::STATUS_SERVICE_NOT_FOUND, "service", "registered", "absent",
     "start it with: voxtreld"},
    {Reach::NotTrusted, TTS::STATUS_PERMISSION_DENIED, "owner", "", "not trusted: ",
     "whoever that is could read what is said; if you trust that user, name it with --trust-owner"},
    {Reach::NoAnswer, TTS::STATUS_NO_SERVICE, "answer", "the service answers",
     "the service does not answer", "it hangs or is stopped; end it and start voxtreld again"},
    {Reach::NotReady, TTS::STATUS_NO_SERVICE, "voices", "loaded", "the service is not ready",
     "wait a moment; if it stays so, see what voxtreld prints about its engine"},
    {Reach::NotPermitted, TTS::STATUS_PERMISSION_DENIED, "permission", "this user is admitted",
     "this user is not admitted",
     "ask whoever runs the service; of voxtreld see voxtreld-policy(5)"},
};

Finding good(const char* subject, const std::string& seen) {
    return {subject, Verdict::Good, seen, "", 0};
}

Finding speech(const Symptoms& symptoms) {
    if (symptoms.enabled) {
        return good("speech", "enabled");
    }
    return {"speech", Verdict::Bad, "disabled", "switch it on with: voxtrelctl enable speech",
            TTS::STATUS_DISABLED};
}

Finding lock(const Symptoms& symptoms) {
    const char* seen = lockText(symptoms.lock);
    switch (symptoms.lock) {
        case LockState::Free:
            return good("lock", seen);
        case LockState::OfAnother:
            return {"lock", Verdict::Bad, seen, meaningOf(TTS::STATUS_LOCKED).remedy,
                    TTS::STATUS_LOCKED};
        default:
            return {"lock", Verdict::Perhaps, seen,
                    "the service does not tell it, or not to this user; its log may", 0};
    }
}

Finding events(const Symptoms& symptoms) {
    if (symptoms.events.takesAnyPause) {
        return {"events", Verdict::Perhaps,
                "the service sends them, but takes a pause of 49 days and may be silent for as "
                "long",
                "it must refuse that at once; docs/writing-a-service.md has the rules", 0};
    }
    if (symptoms.events.sendsEvents) {
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

/// The settings that silence speech when they are 0.
std::vector<Finding> volumes(const Symptoms& symptoms) {
    std::vector<Finding> findings;
    for (const SettingReport& setting : symptoms.settings) {
        const bool counts = setting.name == "volume" || setting.name == "tts-volume";
        if (!counts) {
            continue;
        }
        const std::string value = valueText(setting.value);
        if (value == "0") {
            findings.push_back({setting.name, Verdict::Bad, "is 0",
                                "raise it with: voxtrelctl set " + setting.name + " 100", 0});
        } else {
            findings.push_back(good(setting.name.c_str(), value));
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

std::vector<Finding> diagnose(const Symptoms& symptoms) {
    std::vector<Finding> findings;
    for (const Step& step : kSteps) {
        const bool concernsOwner = step.stopsAt == Reach::NotTrusted;
        const std::string owner = concernsOwner ? symptoms.owner : "";
        if (symptoms.reach == step.stopsAt) {
            findings.push_back(
                {step.subject, Verdict::Bad, step.bad + owner, step.remedy, step.code});
            break;
        }
        if (!concernsOwner || !owner.empty()) {
            findings.push_back(good(step.subject, step.good + owner));
        }
    }
    if (symptoms.reach == Reach::Connected) {
        append(findings, {speech(symptoms), lock(symptoms), events(symptoms)});
        append(findings, languages(symptoms));
        append(findings, volumes(symptoms));
    }
    findings.push_back(soundCard(symptoms));
    return findings;
}

}  // namespace voxtrelctl
