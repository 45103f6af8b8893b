// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "tools/Commands.h"
#include "tools/Doctor.h"
#include "tools/Errors.h"
#include "tools/Json.h"
#include "tools/Lock.h"
#include "tools/Owner.h"
#include "tools/Platform.h"
#include "tools/Render.h"
#include "tools/ServiceSettings.h"
#include "tools/Settle.h"

namespace voxtrelctl {
namespace {

constexpr auto kAnswerPatience = std::chrono::seconds(5);

bool hasSoundCard() {
    std::ifstream cards("/proc/asound/cards");
    std::string first;
    return std::getline(cards, first) && first.find("no soundcards") == std::string::npos;
}

/// Asks once for the capabilities, which a connection would wait for up to a minute.
Reach askService(const android::sp<android::IBinder>& binder) {
    TTS::Capabilities can;
    (void)TTS::ITextToSpeechFestival::asInterface(binder)->getCapabilities(can);
    if (!can.ready) {
        return binder->pingBinder() == android::OK ? Reach::NotReady : Reach::NoService;
    }
    return can.permitted ? Reach::Connected : Reach::NotPermitted;
}

/// A service that hangs would keep this thread for ever, so another one asks.
Reach askInTime(const android::sp<android::IBinder>& binder) {
    std::thread asker([binder] {
        const auto reach = static_cast<int>(askService(binder));
        EventQueue::instance().post({Notice::Source::Connected, {}, reach});
    });
    const Notice notice = EventQueue::instance().next(
        EventQueue::Clock::now() + kAnswerPatience,
        [](const Notice& n) { return n.source == Notice::Source::Connected; });
    const bool answered = notice.source == Notice::Source::Connected;
    settle(std::move(asker), answered);
    return answered ? static_cast<Reach>(notice.status) : Reach::NoAnswer;
}

Reach findReach(std::string& ownerName) {
    if (!isServiceManagerThere()) {
        return Reach::NoServiceManager;
    }
    const auto binder = findService();
    if (binder == nullptr) {
        return Reach::NoService;
    }
    const std::optional<Owner> owner = ownerOf(binder);
    ownerName = owner.has_value() ? owner->name : "";
    return owner.has_value() && !owner->isTrusted ? Reach::NotTrusted : askInTime(binder);
}

Symptoms examine(Terminal& terminal) {
    Symptoms symptoms;
    symptoms.hasSoundCard = hasSoundCard();
    startBinderThreads();
    symptoms.reach = findReach(symptoms.owner);
    if (symptoms.reach == Reach::Connected) {
        Session session(terminal);
        symptoms.enabled = session.client()->enabled();
        symptoms.events = checkEvents(session);
        symptoms.lock = lockState(session);
        symptoms.settings = surveySettings(session, {});
        symptoms.languages = surveyLanguages(session);
    }
    return symptoms;
}

}  // namespace

int runDoctor(const Options& options, Terminal& terminal) {
    const Symptoms symptoms = examine(terminal);
    const std::vector<Finding> findings = diagnose(symptoms);
    options.json ? terminal.line(findingsJson(findings)) : terminal.print(findingsPage(findings));
    int status = 0;
    for (const Finding& finding : findings) {
        if (finding.verdict == Verdict::Bad && status == 0) {
            std::cerr << "voxtrelctl: "
                      << Failure(finding.code, finding.subject + " " + finding.seen, finding.remedy)
                             .what()
                      << "\n";
            status = 1;
        }
    }
    if (symptoms.reach == Reach::NoAnswer) {
        std::_Exit(status);  // the thread that asks is still waiting inside the runtime
    }
    return status;
}

}  // namespace voxtrelctl
