// SPDX-License-Identifier: Apache-2.0
#include "service/WavSink.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace voxtreld {

bool WavFile::create(const std::string& path, unsigned rate, std::string& error) {
    close();
    SF_INFO info = {};
    info.samplerate = static_cast<int>(rate);
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    mFile = sf_open(path.c_str(), SFM_WRITE, &info);
    if (mFile == nullptr) {
        error = "cannot write the sound file '" + path + "': " + sf_strerror(nullptr);
        return false;
    }
    return updateHeader();
}

bool WavFile::write(const int16_t* samples, size_t count) {
    const auto wanted = static_cast<sf_count_t>(count);
    return mFile != nullptr && sf_write_short(mFile, samples, wanted) == wanted;
}

bool WavFile::updateHeader() {
    // The command returns 0 on success, and nothing else.
    return mFile != nullptr && sf_command(mFile, SFC_UPDATE_HEADER_NOW, nullptr, 0) == 0 &&
           sf_error(mFile) == 0;
}

void WavFile::close() {
    if (mFile != nullptr) {
        sf_close(mFile);
        mFile = nullptr;
    }
}

bool WavSink::open(unsigned rate, std::string& error) {
    return mFile.create(mPath, rate, error);
}

bool WavSink::write(const int16_t* samples, size_t count, const Cancel& /*cancel*/) {
    return mFile.write(samples, count);
}

bool WavSink::end(const Cancel& /*cancel*/) {
    return mFile.updateHeader();
}

bool WavFolderSink::open(unsigned rate, std::string& error) {
    mRate = rate;
    std::error_code failure;
    std::filesystem::create_directories(mFolder, failure);
    const std::filesystem::directory_iterator entries(mFolder, failure);
    if (failure) {
        error = "cannot use the folder '" + mFolder + "' for sound files: " + failure.message();
        return false;
    }
    for (const auto& entry : entries) {
        const std::string name = entry.path().filename().string();
        const auto number = static_cast<unsigned>(std::strtoul(name.c_str(), nullptr, 10));
        mLastNumber = std::max(mLastNumber, number);
    }
    return true;
}

bool WavFolderSink::begin(uint32_t pid, uint32_t id) {
    char name[64];
    std::snprintf(name, sizeof name, "/%06u-%u-%u.wav", ++mLastNumber, pid, id);
    std::string error;
    return mFile.create(mFolder + name, mRate, error);
}

bool WavFolderSink::write(const int16_t* samples, size_t count, const Cancel& /*cancel*/) {
    return mFile.write(samples, count);
}

bool WavFolderSink::end(const Cancel& /*cancel*/) {
    const bool good = mFile.updateHeader();
    mFile.close();
    return good;
}

}  // namespace voxtreld
