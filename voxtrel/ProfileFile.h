// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILEFILE_H
#define VOXTREL_PROFILEFILE_H

#include <string>

#include "profile/TtsSetting.h"
#include "voxtrel/Result.h"

namespace voxtrel {

/// Puts a profile in place of the file, whole or not at all. Prints nothing.
Result<void> replaceProfile(const std::string& path, const TTS::TtsSetting& setting);

/// A new setting with what the profile says. No upgrade is made. Prints nothing.
Result<TTS::TtsSetting> readProfile(const std::string& path);

/// The setting as it comes back from the profile that it is written into.
TTS::TtsSetting rereadProfile(const TTS::TtsSetting& setting);

}  // namespace voxtrel

#endif
