// SPDX-License-Identifier: Apache-2.0
#include "profile/internal/ProfileWriter.h"

#include <locale.h>

#include <cstdio>

#include "profile/internal/ProfileKeys.h"

namespace TTS {
namespace {

/// While it lives, this thread writes numbers as the "C" locale does: an application's own may have
/// commas for the point.
class ClassicNumbers {
public:
    ClassicNumbers()
        : mClassic(newlocale(LC_ALL_MASK, "C", nullptr)), mBefore(uselocale(mClassic)) {}
    ~ClassicNumbers() {
        uselocale(mBefore);
        freelocale(mClassic);
    }
    ClassicNumbers(const ClassicNumbers&) = delete;
    ClassicNumbers& operator=(const ClassicNumbers&) = delete;

private:
    const locale_t mClassic;
    const locale_t mBefore;
};

void addNumber(std::string& text, const TtsSetting& setting, const ProfileKey& key) {
    char digits[32];  // the longest number has half of that
    int length = 0;
    switch (key.value) {
        case ProfileValue::kPercent:
        case ProfileValue::kNumber:
            length = std::snprintf(digits, sizeof digits, "%u", setting.*key.field.number);
            break;
        case ProfileValue::kFraction:
            length = std::snprintf(digits, sizeof digits, "%g",
                                   static_cast<double>(setting.*key.field.fraction));
            break;
        default:
            length = std::snprintf(digits, sizeof digits, "%d", setting.*key.field.integer);
    }
    text.append(digits, static_cast<size_t>(length));
}

bool isWritten(const TtsSetting& setting, const ProfileKey& key) {
    if (key.value == ProfileValue::kSwitch) {
        const int32_t value = setting.*key.field.integer;
        return value == 0 || value == 1;
    }
    return key.value != ProfileValue::kReadOnly;
}

void addLine(std::string& text, const TtsSetting& setting, const ProfileKey& key) {
    text.append(key.name).append("=");
    if (key.value == ProfileValue::kText) {
        text.append(setting.*key.field.text);
    } else {
        addNumber(text, setting, key);
    }
    text.append("\n");
}

}  // namespace

std::string profileText(const TtsSetting& setting) {
    const ClassicNumbers numbers;
    std::string text = "\n";
    for (const ProfileKey& key : kProfileKeys) {
        if (isWritten(setting, key)) {
            addLine(text, setting, key);
        }
    }
    return text.append("\n");
}

}  // namespace TTS
