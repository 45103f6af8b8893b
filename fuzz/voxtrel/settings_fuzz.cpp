// SPDX-License-Identifier: Apache-2.0
// Any settings through each of the three that write them (the profile's own writer, that of the
// interface for applications, and the service's journal): what is read is what was written, as far
// as the format has room for it, and the writers of one format write the same.
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include "fuzz/Input.h"
#include "profile/TtsSetting.h"
#include "service/GlobalSettings.h"
#include "service/SettingsText.h"
#include "tests/support/TempFolder.h"
#include "voxtrel/ProfileFile.h"

namespace {

using TTS::TtsSetting;
using voxtrel_fuzz::Input;
using voxtrel_fuzz::require;

using Switch = int32_t TtsSetting::*;
constexpr Switch kSwitches[] = {&TtsSetting::mVerbosity,         &TtsSetting::mEnable,
                                &TtsSetting::mSpeedEnable,       &TtsSetting::mPitchEnable,
                                &TtsSetting::mVoiceEnable,       &TtsSetting::mVolumeEnable,
                                &TtsSetting::mMediaVolumeEnable, &TtsSetting::mTtsVolumeEnable};
constexpr float TtsSetting::*kFloats[] = {&TtsSetting::mVolume, &TtsSetting::mPitch};
constexpr uint32_t TtsSetting::*kNumbers[] = {&TtsSetting::mSpeed, &TtsSetting::mVoice};
constexpr uint32_t TtsSetting::*kPercents[] = {&TtsSetting::mMediaVolume, &TtsSetting::mTtsVolume};

uint32_t someNumber(Input& input) {
    return input.below(2) == 0 ? input.byte() : input.word();
}

float someFloat(Input& input) {
    const uint32_t bits = input.word();
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return input.below(2) == 0 ? static_cast<float>(static_cast<int32_t>(bits) >> 16U) : value;
}

TtsSetting someSettings(Input& input) {
    TtsSetting setting("app");
    for (const Switch each : kSwitches) {
        const unsigned choice = input.below(8);
        setting.*each =
            choice < 6 ? static_cast<int32_t>(choice % 2) : static_cast<int32_t>(input.word());
    }
    for (const auto each : kFloats) {
        setting.*each = someFloat(input);
    }
    for (const auto each : kNumbers) {
        setting.*each = someNumber(input);
    }
    for (const auto each : kPercents) {
        setting.*each = someNumber(input);
    }
    setting.mLang = input.text();
    return setting;
}

/// As written with six digits, whole, and within 32 bits.
float readBack(float value) {
    char text[64];
    (void)std::snprintf(text, sizeof text, "%g", static_cast<double>(value));
    return static_cast<float>(std::strtol(text, nullptr, 10));
}

/// The line of a text in which it stands ends with it.
void requireRead(const TtsSetting& written, const TtsSetting& read) {
    const TtsSetting fresh("app");
    for (const Switch each : kSwitches) {
        const bool isKept = written.*each == 0 || written.*each == 1;
        require(read.*each == (isKept ? written.*each : fresh.*each));
    }
    for (const auto each : kFloats) {
        require(read.*each == readBack(written.*each));
    }
    for (const auto each : kNumbers) {
        require(read.*each == std::min<uint32_t>(written.*each, INT32_MAX));
    }
    for (const auto each : kPercents) {
        require(read.*each == (written.*each <= 100 ? written.*each : fresh.*each));
    }
    require(read.mLang == written.mLang && read.mVersion == fresh.mVersion);
}

/// As another process would find it.
TtsSetting reread(const std::string& path) {
    TtsSetting setting("app");
    require(setting.deserialize(path.c_str()));
    return setting;
}

void requireSameWriters(const TtsSetting& setting, const std::string& path,
                        const std::string& other) {
    require(setting.serialize(path.c_str()));
    require(voxtrel::replaceProfile(other, setting).status() == voxtrel::Status::Ok);
    require(voxtrel_test::readFile(path) == voxtrel_test::readFile(other));
    const auto read = voxtrel::readProfile(other);
    require(read.status() == voxtrel::Status::Ok);
    const TtsSetting own = reread(path);
    const TtsSetting without = voxtrel::rereadProfile(setting);
    for (const TtsSetting* each : {&*read, &without}) {
        require(each->mLang == own.mLang && each->mSpeed == own.mSpeed);
        require(each->mVolume == own.mVolume && each->mEnable == own.mEnable);
    }
}

/// What a file loses, it has lost after two rounds: the digits of a number, and then its exponent.
void requireStable(const std::string& path) {
    for (int round = 0; round < 2; ++round) {
        require(reread(path).serialize(path.c_str()));
    }
    const std::string text = voxtrel_test::readFile(path);
    require(reread(path).serialize(path.c_str()));
    require(voxtrel_test::readFile(path) == text);
}

/// The journal keeps all that a service has read, to the bit.
void requireKeptByTheService(const std::string& path) {
    const voxtreld::GlobalSettings service(voxtreld::readSettings(voxtrel_test::readFile(path)));
    const TtsSetting read = voxtreld::readSettings(voxtreld::writeSettings(service.profile()));
    require(voxtreld::GlobalSettings(read).isSameAs(service));
    require(read.mPitch == service.pitch() && read.mVolume == service.volume());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const voxtrel_test::TempFolder folder;
    static const std::string path = folder.path("own.ini");
    static const std::string other = folder.path("other.ini");
    if (access(path.c_str(), F_OK) != 0) {
        voxtrel_test::writeFile(path, "");
    }
    Input input(data, size);
    const TtsSetting setting = someSettings(input);
    requireSameWriters(setting, path, other);
    if (setting.mLang.find('\n') == std::string::npos) {
        requireRead(setting, reread(path));
    }
    requireKeptByTheService(path);
    requireStable(path);
    return 0;
}
