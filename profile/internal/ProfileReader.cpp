// SPDX-License-Identifier: Apache-2.0
#include "profile/internal/ProfileReader.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

#include "profile/internal/ProfileKeys.h"

namespace TTS {
namespace {

constexpr uint32_t kHighestSwitch = 1;
constexpr uint32_t kHighestPercent = 100;

// A device's `long` has 32 bits; a PC must read the same number from the same file.
int32_t numberIn(const char* text) {
    constexpr long kLowest = std::numeric_limits<int32_t>::min();
    constexpr long kHighest = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::clamp(std::strtol(text, nullptr, 10), kLowest, kHighest));
}

/// The number is compared unsigned, so that negative values fall out as well.
bool isInRange(ProfileValue value, uint32_t number) {
    switch (value) {
        case ProfileValue::kSwitch:
            return number <= kHighestSwitch;
        case ProfileValue::kPercent:
            return number <= kHighestPercent;
        default:
            return true;
    }
}

void storeNumber(TtsSetting& setting, const ProfileKey& key, int32_t number) {
    switch (key.value) {
        case ProfileValue::kSwitch:
        case ProfileValue::kReadOnly:
            setting.*key.field.integer = number;
            break;
        case ProfileValue::kPercent:
        case ProfileValue::kNumber:
            setting.*key.field.number = static_cast<uint32_t>(number);
            break;
        case ProfileValue::kFraction:
            setting.*key.field.fraction = static_cast<float>(number);
            break;
        case ProfileValue::kVersion:
        case ProfileValue::kText:
            break;
    }
}

/// Applies one line. @return true if it says that the file has the current version.
bool applyTo(TtsSetting& setting, const std::string& line) {
    const size_t separator = line.find('=');
    if (separator == std::string::npos) {
        return false;
    }
    const std::string_view name(line.data(), separator);
    const auto* key = std::find_if(std::begin(kProfileKeys), std::end(kProfileKeys),
                                   [name](const ProfileKey& each) { return each.name == name; });
    if (key == std::end(kProfileKeys)) {
        return false;
    }
    if (key->value == ProfileValue::kText) {
        setting.*key->field.text = line.substr(separator + 1);
        return false;
    }
    const int32_t number = numberIn(line.c_str() + separator + 1);
    if (isInRange(key->value, static_cast<uint32_t>(number))) {
        storeNumber(setting, *key, number);
    }
    return key->value == ProfileValue::kVersion && number == setting.mVersion;
}

}  // namespace

void ProfileReader::take(const char* bytes, size_t size) {
    const std::string_view all(bytes, size);
    size_t start = 0;
    for (size_t end = 0; (end = all.find('\n', start)) != std::string_view::npos; start = end + 1) {
        mLine.append(bytes + start, end - start);
        applyLine();
    }
    mLine.append(bytes + start, size - start);
}

void ProfileReader::applyLine() {
    mIsCurrent = applyTo(mSetting, mLine) || mIsCurrent;
    mLine.clear();
}

}  // namespace TTS
