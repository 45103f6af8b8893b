// SPDX-License-Identifier: Apache-2.0
// Any bytes as a profile: once under an ordinary name, once under the name that is upgraded. What
// was read must keep to the format's ranges, and must come back when it is written and read again.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "fuzz/Input.h"
#include "profile/TtsSetting.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_fuzz::require;

/// A file in memory, and a name of choice by which it can be opened.
class MemoryFile {
public:
    explicit MemoryFile(const std::string& link)
        : mDescriptor(memfd_create("profile", MFD_CLOEXEC)), mPath(link) {
        std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(mDescriptor), mPath);
    }
    ~MemoryFile() {
        std::filesystem::remove(mPath);
        close(mDescriptor);
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    void fill(const uint8_t* data, size_t size) {
        require(ftruncate(mDescriptor, 0) == 0);
        require(pwrite(mDescriptor, data, size, 0) == static_cast<ssize_t>(size));
    }
    const char* path() const { return mPath.c_str(); }

private:
    int mDescriptor;
    std::string mPath;
};

struct Files {
    voxtrel_test::TempFolder folder;
    MemoryFile ordinary{folder.path("app.ini")};
    MemoryFile upgraded{folder.path("voxtrel.ini")};
};

bool isVolume(uint32_t value) {
    return value <= 100 || value == 65535;
}

void requireRanges(const TtsSetting& s) {
    for (int32_t flag : {s.mVerbosity, s.mEnable, s.mSpeedEnable, s.mPitchEnable, s.mVoiceEnable,
                         s.mVolumeEnable, s.mMediaVolumeEnable, s.mTtsVolumeEnable}) {
        require(flag == 0 || flag == 1);
    }
    require(isVolume(s.mMediaVolume) && isVolume(s.mTtsVolume));
    require(s.mLang.find('\n') == std::string::npos);
    require(s.mVersion == 2 && s.mName == "app");
}

// Numbers above six digits lose some on their way through the file, so floats are not compared.
void requireSame(const TtsSetting& a, const TtsSetting& b) {
    require(a.mSpeedEnable == b.mSpeedEnable && a.mVolumeEnable == b.mVolumeEnable);
    require(a.mMediaVolumeEnable == b.mMediaVolumeEnable && a.mPitchEnable == b.mPitchEnable);
    require(a.mTtsVolumeEnable == b.mTtsVolumeEnable && a.mVoiceEnable == b.mVoiceEnable);
    require(a.mVerbosity == b.mVerbosity && a.mEnable == b.mEnable && a.mLang == b.mLang);
    const auto isKept = [](uint32_t value, uint32_t back) {
        return back == (value <= INT32_MAX ? value : static_cast<uint32_t>(INT32_MAX));
    };
    require(isKept(a.mSpeed, b.mSpeed) && isKept(a.mVoice, b.mVoice));
    // Unset volumes are written as 65535, which the reader refuses: the fresh value stands.
    require(a.mMediaVolume == b.mMediaVolume && a.mTtsVolume == b.mTtsVolume);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Files files;
    files.ordinary.fill(data, size);
    TtsSetting setting("app");
    require(setting.deserialize(files.ordinary.path()));
    requireRanges(setting);
    require(setting.serialize(files.ordinary.path()));
    TtsSetting back("app");
    require(back.deserialize(files.ordinary.path()));
    requireSame(setting, back);

    files.upgraded.fill(data, size);
    TtsSetting fresh("app");
    require(fresh.deserialize(files.upgraded.path()));
    requireRanges(fresh);
    TtsSetting again("app");
    require(again.deserialize(files.upgraded.path()));
    TtsSetting third("app");
    require(third.deserialize(files.upgraded.path()));
    require(again.mSpeed == third.mSpeed && again.mLang == third.mLang);
    return 0;
}
