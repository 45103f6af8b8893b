// SPDX-License-Identifier: Apache-2.0
// A profile between its file and a setting, with the messages that applications know.
#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <tuple>

#include "profile/internal/File.h"
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

/// Each line is handed to the system before the next; the first that cannot be written is the last.
void writeLines(const File& file, std::string_view text) {
    bool isWritten = true;
    while (isWritten && !text.empty()) {
        const size_t size = text.find('\n') + 1;  // the text ends with a line end
        isWritten = file.write(text.data(), size);
        text.remove_prefix(size);
    }
}

/// @return false if an error hides the rest of the file. A directory opens and holds nothing.
bool readAll(const File& file, ProfileReader& reader) {
    char piece[512];
    ssize_t size = 0;
    while ((size = file.read(piece, sizeof piece)) > 0) {
        reader.take(piece, static_cast<size_t>(size));
    }
    if (size == 0) {
        reader.finish();
    }
    return size == 0 || errno == EISDIR;
}

}  // namespace

bool TtsSetting::serialize(const char* path) const {
    const std::string name = fileOf(path);
    const File file(name, O_RDWR | O_CREAT | O_TRUNC);
    if (!file.isOpen()) {
        std::printf("[TtsSetting] Error while writing tts profile %s\n", name.c_str());
        return false;
    }
    writeLines(file, profileText(*this));
    // Safe between threads with the device's C library; there is nothing to do about a failure.
    std::ignore = std::system("/bin/sync");  // NOLINT(concurrency-mt-unsafe)
    return true;
}

bool TtsSetting::deserialize(const char* path) {
    const std::string name = fileOf(path);
    std::printf("[TtsSetting] %s %s\n", "deserialize", name.c_str());
    ProfileReader reader(*this);
    bool isWhole = false;
    {
        const File file(name, O_RDONLY);
        if (!file.isOpen()) {
            std::printf("[TtsSetting] Error while reading tts profile %s\n", name.c_str());
            return false;
        }
        isWhole = readAll(file, reader);
    }
    if (!reader.isCurrent() && name.find("voxtrel.ini") != std::string::npos) {
        replaceUnsetValues(*this);
        if (isWhole) {              // else the file would lose what could not be read
            (void)serialize(path);  // the values hold in memory whether or not they can be kept
        }
    }
    return true;
}

}  // namespace TTS
