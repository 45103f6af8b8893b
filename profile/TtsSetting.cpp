// SPDX-License-Identifier: Apache-2.0
#include "profile/TtsSetting.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "profile/internal/File.h"
#include "vocabulary/Language.h"

namespace TTS {

TtsSetting::TtsSetting(std::string name)
    : mName(std::move(name)),
      mSpeed(65535),
      mVolume(65535.0F),
      mMediaVolume(65535),
      mTtsVolume(65535),
      mVoice(65535),
      mPitch(65535.0F),
      mLang(langId2Str(LANG_NA)),
      mVerbosity(0),
      mEnable(1),
      mSpeedEnable(1),
      mPitchEnable(1),
      mVoiceEnable(1),
      mVolumeEnable(1),
      mMediaVolumeEnable(1),
      mTtsVolumeEnable(1),
      mSampleRate(48000),
      mChannels(2),
      mMixerPath(1),
      mVersion(2),
      mLongBreakDuration(0),
      mShortBreakDuration(0) {}

std::string TtsSetting::defaultPath(const std::string& name) {
    return "/Customer/" + name + ".ini";
}

std::string TtsSetting::fileOf(const char* path) const {
    return path != nullptr ? path : defaultPath(mName);
}

bool TtsSetting::isExistProfile(const char* path) const {
    struct stat status {};
    return stat(fileOf(path).c_str(), &status) == 0;
}

void TtsSetting::removeProfile(const char* path) const {
    (void)unlink(fileOf(path).c_str());  // a profile that is not there is as good as removed
}

void TtsSetting::copyProfile(const char* destination, const char* source) const {
    // No name at all opens no file, as a source that is missing. The source is opened first, and a
    // copy onto itself finds it empty.
    const File from(source != nullptr ? source : "", O_RDONLY);
    const File to(fileOf(destination), O_WRONLY | O_CREAT | O_TRUNC);
    char piece[512];
    ssize_t size = 0;
    do {
        size = from.read(piece, sizeof piece);
    } while (size > 0 && to.write(piece, static_cast<size_t>(size)));
}

}  // namespace TTS
