// SPDX-License-Identifier: Apache-2.0
// A profile between its file and a setting, with the messages that applications know.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <locale>
#include <tuple>

#include "profile/internal/ProfileReader.h"
#include "profile/internal/ProfileWriter.h"
#include "vocabulary/Language.h"

namespace TTS {
namespace {

void replaceUnsetValues(TtsSetting& setting) {
    if (langStr2Id(setting.mLang) == LANG_NA) {
        setting.mLang = langId2Str(LANG_EN_US);
    }
    const auto replace = [](auto& value, auto real) { value = value == 65535 ? real : value; };
    replace(setting.mSpeed, 300U);
    replace(setting.mPitch, 200.0F);
    replace(setting.mVolume, 100.0F);
    replace(setting.mVoice, 0U);
    replace(setting.mMediaVolume, 50U);
    replace(setting.mTtsVolume, 100U);
}

}  // namespace

bool TtsSetting::serialize(const char* path) const {
    const std::string name = fileOf(path);
    std::fstream file;
    // An application's own locale may put commas and thousands marks into the numbers.
    file.imbue(std::locale::classic());
    file.open(name, std::ios::in | std::ios::out | std::ios::trunc);
    if (!file.is_open()) {
        std::printf("[TtsSetting] Error while writing tts profile %s\n", name.c_str());
        return false;
    }
    writeProfile(file, *this);
    // Safe between threads with the device's C library; there is nothing to do about a failure.
    std::ignore = std::system("/bin/sync");  // NOLINT(concurrency-mt-unsafe)
    file.close();
    return true;
}

bool TtsSetting::deserialize(const char* path) {
    const std::string name = fileOf(path);
    std::printf("[TtsSetting] %s %s\n", "deserialize", name.c_str());
    std::ifstream file;
    file.imbue(std::locale::classic());
    file.open(name);
    if (!file.is_open()) {
        std::printf("[TtsSetting] Error while reading tts profile %s\n", name.c_str());
        return false;
    }
    const bool isCurrent = readProfile(file, *this);
    file.close();
    if (!isCurrent && name.find("voxtrel.ini") != std::string::npos) {
        replaceUnsetValues(*this);
        (void)serialize(path);  // the values hold in memory whether or not they can be kept
    }
    return true;
}

}  // namespace TTS
