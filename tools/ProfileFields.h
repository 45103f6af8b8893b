// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_PROFILEFIELDS_H
#define VOXTREL_TOOLS_PROFILEFIELDS_H

#include <vector>

#include "client/TTSClientPrivate.h"
#include "tools/Reports.h"

namespace voxtrelctl {

using Profile = decltype(TTS::TTSClientPrivate::mSetting);

/// Every value of a profile by its key in the file, in the file's order; those that are read but
/// never written come last.
std::vector<ProfileEntry> profileEntries(const Profile& profile);

/// Where a setting of the service stands in a profile.
struct ProfileField {
    const char* setting;       ///< name in settings()
    uint32_t Profile::*whole;  ///< one of the three is not null
    float Profile::*real;
    std::string Profile::*code;
    int32_t Profile::*flag;  ///< null: the setting has none
};

/// In the order in which they are given to the service: a voice belongs to the language before it.
const std::vector<ProfileField>& profileFields();

Value fieldValue(const Profile& profile, const ProfileField& field);
void setField(Profile& profile, const ProfileField& field, const Value& value);

/// False for the values that stand for "never set".
bool isSet(const Value& value);

}  // namespace voxtrelctl

#endif
