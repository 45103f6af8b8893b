// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_HOUSE_FILES_H
#define VOXTREL_TESTS_HOUSE_FILES_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace house {

/// The whole text of a file; empty where there is none.
inline std::string read(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace house

#endif
