// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Log.h"

#include <iostream>

namespace sd_voxtrel {

bool Log::open(const std::string& path) {
    mFile.close();
    mFile.clear();
    if (!path.empty()) {
        mFile.open(path, std::ios::app);
    }
    return path.empty() || mFile.is_open();
}

void Log::write(int level, const std::string& line) {
    if (level <= mLevel) {
        std::cerr << "sd_voxtrel: " + line + "\n";
    }
    if (mFile.is_open()) {
        mFile << line << std::endl;
    }
}

}  // namespace sd_voxtrel
