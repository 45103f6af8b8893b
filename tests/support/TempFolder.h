// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_TEMPFOLDER_H
#define VOXTREL_TESTS_SUPPORT_TEMPFOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace voxtrel_test {

/// A new folder that goes away, with all that is in it, when the object does.
class TempFolder {
public:
    TempFolder()
        : mPath((std::filesystem::temp_directory_path() / "voxtrel-test-XXXXXX").string()) {
        if (mkdtemp(mPath.data()) == nullptr) {
            throw std::runtime_error("cannot make a folder like " + mPath);
        }
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// The full path of an entry, whether or not it is there.
    std::string path(const std::string& entry) const { return mPath + "/" + entry; }

private:
    std::string mPath;
};

inline void writeFile(const std::string& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content << std::flush;
    if (!file.good()) {
        throw std::runtime_error("cannot write " + path);
    }
}

/// Everything in the file; throws where there is none, so that a missing file is never taken for
/// an empty one.
inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) {
        throw std::runtime_error("cannot read " + path);
    }
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

}  // namespace voxtrel_test

#endif
