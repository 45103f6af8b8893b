// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SETTINGS_H
#define VOXTREL_TOOLS_SETTINGS_H

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "vocabulary/Capabilities.h"
#include "vocabulary/GlobalConfig.h"

namespace voxtrelctl {

/// How a setting's value is written on the command line and travels to the service.
enum class ValueType { Unsigned, Float, Language };

/// One service-wide setting as `get`, `set`, `enable` and `disable` name it.
struct Setting {
    const char* name;       ///< on the command line and in JSON
    VOXTRELAPI_GCONF key;   ///< value key; 0 for the two that have operations of their own
    VOXTRELAPI_GCONF flag;  ///< enable flag; 0 where there is none
    ValueType type;
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

bool hasFlag(const Setting& setting);

/// A setting's value: whole numbers, real numbers, or a language code.
using Value = std::variant<uint32_t, int32_t, float, std::string>;

/// The value as the command line writes it; floats without trailing zeros.
std::string valueText(const Value& value);

/// Reads `text` as a value of `setting`. Whole numbers are decimal and within 32 bits; languages
/// are taken as written. Throws Failure(-3) naming the setting, the text and what is expected.
Value parseValue(const Setting& setting, const std::string& text);

/// The accepted values in words, as in "80 to 450", from what the service said it can do; empty
/// where the table has nothing to say, or the service does not support the setting. Only for
/// messages: the client library does the checking.
std::string rangeText(const Setting& setting, const TTS::Capabilities& can);

/// rangeText() as the end of a message, such as " (it takes 80 to 450)".
std::string acceptedText(const Setting& setting, const TTS::Capabilities& can);

}  // namespace voxtrelctl

#endif
