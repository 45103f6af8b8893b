// SPDX-License-Identifier: Apache-2.0
#include "tools/ProfileFile.h"

#include <filesystem>
#include <system_error>

#include "tools/Errors.h"
#include "tools/Languages.h"

namespace voxtrelctl {
namespace {

namespace fs = std::filesystem;
using voxtrel::Switch;

/// What the format writes for a value that is not set.
constexpr std::uint32_t kUnset = 65535;
constexpr const char* kNoLanguage = "na_NL";

[[noreturn]] void fail(const std::string& what, const std::string& path,
                       const std::error_code& why) {
    throw Failure(TTS::STATUS_PROFILE_ERROR,
                  "the profile '" + path + "' cannot be " + what + ": " + why.message());
}

}  // namespace

std::string profilePath(const std::string& name) {
    const std::string ending = ".ini";
    const bool ends = name.size() >= ending.size() &&
                      name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
    return ends || name.find('/') != std::string::npos ? name : voxtrel::Profile::pathOf(name);
}

std::vector<ProfileEntry> profileEntries(const voxtrel::Profile& profile) {
    const voxtrel::GlobalSettings& all = profile.settings;
    const auto isOn = [&](Switch which) -> std::int32_t {
        return profile.switchedOff.count(which) == 0 ? 1 : 0;
    };
    const auto real = static_cast<float>(kUnset);
    return {
        {"speed_enable", isOn(Switch::Speed)},
        {"speed", all.speed.value_or(kUnset)},
        {"volume_enable", isOn(Switch::Volume)},
        {"volume", all.volume.value_or(real)},
        {"media_volume_enable", isOn(Switch::MediaVolume)},
        {"media_volume", all.mediaVolume.value_or(kUnset)},
        {"tts_volume_enable", isOn(Switch::SpeechVolume)},
        {"tts_volume", all.speechVolume.value_or(kUnset)},
        {"voice_enable", isOn(Switch::Voice)},
        {"voice", all.voice.value_or(kUnset)},
        {"pitch_enable", isOn(Switch::Pitch)},
        {"pitch", all.pitch.value_or(real)},
        {"lang", all.language ? codeOf(*all.language) : kNoLanguage},
        {"verbosity", all.verbosity.value_or(0)},
        {"enable", isOn(Switch::Speech)},
        {"sample_rate", profile.sampleRate},
        {"channels", profile.channels},
        {"mixer_path", profile.mixerPath},
        {"long_break_duration", profile.longBreakDuration},
        {"short_break_duration", profile.shortBreakDuration},
    };
}

void copyProfile(const std::string& source, const std::string& destination) {
    std::error_code error;
    if (fs::equivalent(source, destination, error)) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      source + " and " + destination + " are the same file",
                      "name another destination");
    }
    const fs::file_status status = fs::status(source, error);
    if (!fs::is_regular_file(status)) {
        const bool isFolder = fs::is_directory(status);
        fail("read", source, isFolder ? std::make_error_code(std::errc::is_a_directory) : error);
    }
    fs::copy_file(source, destination, fs::copy_options::overwrite_existing, error);
    if (error) {
        fail("copied to " + destination, source, error);
    }
}

void removeProfile(const std::string& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) {
        fail("deleted", path, std::make_error_code(std::errc::is_a_directory));
    }
    if (!fs::remove(path, error)) {
        fail("deleted", path,
             error ? error : std::make_error_code(std::errc::no_such_file_or_directory));
    }
}

}  // namespace voxtrelctl
