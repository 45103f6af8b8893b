// SPDX-License-Identifier: Apache-2.0
#include "tools/ProfileFile.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/Errors.h"

namespace voxtrelctl {
namespace {

/// A file with this content that goes away with the object.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content)
        : mPath((std::filesystem::temp_directory_path() / "voxtrelctl-XXXXXX").string()) {
        const int descriptor = mkstemp(mPath.data());
        if (descriptor < 0) {
            throw Failure(TTS::STATUS_PROFILE_ERROR, "cannot make a file like " + mPath);
        }
        close(descriptor);
        std::ofstream file(mPath, std::ios::binary);
        if (!(file << content << std::flush)) {
            throw Failure(TTS::STATUS_PROFILE_ERROR, "cannot write " + mPath);
        }
    }
    ~TemporaryFile() { unlink(mPath.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const char* path() const { return mPath.c_str(); }

private:
    std::string mPath;
};

}  // namespace

std::string profilePath(const std::string& name) {
    const std::string ending = ".ini";
    const bool ends = name.size() >= ending.size() &&
                      name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
    return ends || name.find('/') != std::string::npos ? name : TTS::TtsSetting::defaultPath(name);
}

std::string contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in.is_open() || in.bad() || !std::filesystem::is_regular_file(path)) {
        throw Failure(TTS::STATUS_PROFILE_ERROR, "cannot read " + path);
    }
    return text.str();
}

void readProfile(TTS::TTSClientPrivate& client, const std::string& path) {
    const TemporaryFile copy(contentOf(path));
    check(client.loadProfile(copy.path()), path);
}

}  // namespace voxtrelctl
