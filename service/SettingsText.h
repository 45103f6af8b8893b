// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_SETTINGSTEXT_H
#define VOXTREL_SERVICE_SETTINGSTEXT_H

#include <string>

#include "profile/TtsSetting.h"

namespace voxtreld {

/// Reads the settings that clients share from a text in the profile's format ("key=value" lines).
///
/// Unlike the profile's own reader it keeps fractions, so that what a client has set comes back:
/// with the six significant digits of the profile's format, or as it was while the journal has it.
/// It skips a value that is no number ("nan", "inf", "") instead of taking it for 0.
///
/// @return every setting that the text does not give as in a fresh profile: unset.
/// Called on: any thread. Locks: none.
TTS::TtsSetting readSettings(const std::string& text);

/// Writes the same settings, fractions in full, for the journal.
std::string writeSettings(const TTS::TtsSetting& settings);

}  // namespace voxtreld

#endif
