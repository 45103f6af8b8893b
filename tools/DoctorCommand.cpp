// SPDX-License-Identifier: Apache-2.0
#include <fstream>

#include "tools/Commands.h"
#include "tools/Doctor.h"
#include "tools/Errors.h"
#include "tools/Json.h"
#include "tools/Render.h"
#include "tools/ServiceSettings.h"

namespace voxtrelctl {
namespace {

using std::chrono::milliseconds;
using voxtrel::Diagnosis;
using voxtrel::Reach;

/// Who does not answer for so long is said to be silent.
constexpr milliseconds kAnswerTimeout(5000);
constexpr milliseconds kLook(100);

bool hasSoundCard() {
    std::ifstream cards("/proc/asound/cards");
    std::string first;
    return std::getline(cards, first) && first.find("no soundcards") == std::string::npos;
}

Diagnosis look(Connection& connection) {
    const milliseconds timeout = std::min(connection.left(), kAnswerTimeout);
    const milliseconds end = connection.left() - timeout;
    Diagnosis seen = connection.client().diagnose(timeout);
    while ((seen.reach == Reach::ServiceSilent || seen.reach == Reach::ManagerSilent) &&
           connection.left() > end) {
        (void)connection.client().waitUntilConnected(kLook);
        seen = connection.client().diagnose(kLook);
    }
    return seen;
}

Symptoms examine(Connection& connection) {
    Symptoms symptoms;
    symptoms.hasSoundCard = hasSoundCard();
    symptoms.way = look(connection);
    if (symptoms.way.reach == Reach::Connected) {
        voxtrel::Client& client = connection.client();
        symptoms.enabled =
            connection.require(client.isOn(voxtrel::Switch::Speech, connection.left()));
        symptoms.lock = connection.require(client.lockState(connection.left()));
        symptoms.settings = surveySettings(connection, {});
        symptoms.languages = surveyLanguages(connection);
        const auto events = client.checkEvents(connection.left());
        symptoms.sendsEvents = static_cast<bool>(events);
        if (!events && !connection.isUntold(events.error())) {
            connection.require(events.error());
        }
        symptoms.way.takesAnyPause = client.diagnose(kLook).takesAnyPause;
    }
    return symptoms;
}

/// The first cause, as an application is told it.
std::string lineOf(const Finding& finding) {
    const std::string seen = finding.subject + " " + finding.seen;
    return finding.code != 0 ? Failure(finding.code, seen, finding.remedy).what()
                             : seen + ": " + finding.remedy;
}

}  // namespace

int runDoctor(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    const std::vector<Finding> findings = findingsOf(examine(connection));
    options.json ? terminal.line(findingsJson(findings)) : terminal.print(findingsPage(findings));
    for (const Finding& finding : findings) {
        if (finding.verdict == Verdict::Bad) {
            printError(lineOf(finding));
            return 1;
        }
    }
    return 0;
}

}  // namespace voxtrelctl
