// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SETTINGS_H
#define VOXTREL_TOOLS_SETTINGS_H

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "voxtrel/Settings.h"
#include "voxtrel/Speech.h"

namespace voxtrelctl {

/// Where a setting stands among all.
using Field = std::variant<std::optional<std::uint32_t> voxtrel::GlobalSettings::*,
                           std::optional<std::int32_t> voxtrel::GlobalSettings::*,
                           std::optional<float> voxtrel::GlobalSettings::*,
                           std::optional<std::string> voxtrel::GlobalSettings::*>;

/// One service-wide setting as `get`, `set`, `enable` and `disable` name it.
struct Setting {
    const char* name;  ///< on the command line and in JSON
    Field field;
    std::optional<voxtrel::Switch> which;
    const char* help;
};

/// Every setting, in the order in which it is listed.
const std::vector<Setting>& settings();

/// The setting of that name, or null.
const Setting* findSetting(const std::string& name);

/// The setting of that name; throws Failure(-3), listing the names, when there is none.
const Setting& settingNamed(const std::string& name);

/// The names of the settings for which `wanted` holds, joined by ", ".
std::string settingNames(bool (*wanted)(const Setting&));

bool hasSwitch(const Setting& setting);

/// The switch of that name, which is "speech" or a setting's; throws Failure(-3) when there is
/// none.
voxtrel::Switch switchNamed(const std::string& name);

/// A setting's value: whole numbers, real numbers, or a language code; an empty text for what the
/// service does not tell.
using Value = std::variant<std::uint32_t, std::int32_t, float, std::string>;

/// The value as the command line writes it; floats without trailing zeros.
std::string valueText(const Value& value);

Value valueOf(const voxtrel::GlobalSettings& settings, const Setting& setting);

/// The settings with this one alone.
voxtrel::GlobalSettings only(const Setting& setting, const Value& value);

/// Reads `text` as a value of `setting`. Whole numbers are decimal and within 32 bits; languages
/// are taken as written. Throws Failure(-3) naming the setting, the text and what is expected.
Value parseValue(const Setting& setting, const std::string& text);

/// What the service takes; not supported where there is no range to tell.
voxtrel::Range<double> rangeOf(const Setting& setting, const voxtrel::Features& can);

/// The range in words, as in "80 to 450"; empty where there is none to tell.
std::string rangeText(const Setting& setting, const voxtrel::Features& can);

/// rangeText() as the end of a message, such as " (it takes 80 to 450)".
std::string acceptedText(const Setting& setting, const voxtrel::Features& can);

/// False for a number out of the range, or of a setting that the service does not support.
bool isAccepted(const Setting& setting, const Value& value, const voxtrel::Features& can);

}  // namespace voxtrelctl

#endif
