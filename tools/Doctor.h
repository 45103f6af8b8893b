// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_DOCTOR_H
#define VOXTREL_TOOLS_DOCTOR_H

#include <vector>

#include "tools/Reports.h"
#include "voxtrel/Diagnosis.h"

namespace voxtrelctl {

/// What was seen. Unless there is a connection, only the first two.
struct Symptoms {
    voxtrel::Diagnosis way;
    bool hasSoundCard = false;
    bool enabled = false;
    bool sendsEvents = false;
    voxtrel::LockState lock = voxtrel::LockState::Unknown;
    std::vector<SettingReport> settings;
    std::vector<LanguageReport> languages;
};

/// Every cause of silence in a line of its own, with its remedy; what is in order has a line too.
/// What could not be asked has none.
std::vector<Finding> findingsOf(const Symptoms& symptoms);

}  // namespace voxtrelctl

#endif
