// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_DOCTOR_H
#define VOXTREL_TOOLS_DOCTOR_H

#include <vector>

#include "tools/Reports.h"

namespace voxtrelctl {

/// How far the service could be asked.
enum class Reach {
    NoServiceManager,
    NoService,
    NotTrusted,    ///< registered, but of a user that it is not to be asked of
    NoAnswer,      ///< registered, but its process does not answer
    NotReady,      ///< it answers, but is still loading
    NotPermitted,  ///< it answers, but not to this user
    Connected,     ///< everything below is known
};

/// What was seen.
struct Symptoms {
    Reach reach = Reach::NoServiceManager;
    std::string owner;  ///< of the service, as in "user anna (1001)"; empty: not known
    bool hasSoundCard = false;
    bool enabled = false;
    EventReport events;
    LockState lock = LockState::Unknown;
    std::vector<SettingReport> settings;
    std::vector<LanguageReport> languages;
};

/// Every cause of silence in a line of its own, with its remedy; what is in order has a line too.
/// What could not be asked has none.
std::vector<Finding> diagnose(const Symptoms& symptoms);

}  // namespace voxtrelctl

#endif
