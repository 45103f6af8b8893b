// SPDX-License-Identifier: Apache-2.0
#include "tests/support/GoldenDump.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace support {
namespace {

void append(Bytes* section, const std::string& line) {
    if (section == nullptr) {
        throw std::runtime_error("bytes outside a section: " + line);
    }
    const Bytes bytes = fromHex(line);
    section->insert(section->end(), bytes.begin(), bytes.end());
}

}  // namespace

GoldenDump readGoldenDump(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot open " + path);
    }
    GoldenDump dump;
    Bytes* section = nullptr;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string word;
        if (!(words >> word)) {
            continue;
        }
        if (word == "code") {
            words >> dump.code;
        } else if (word == "flags") {
            words >> dump.flags;
        } else if (word == "request") {
            section = &dump.request;
        } else if (word == "binder") {
            dump.requestEndsWithBinder = true;
        } else if (word == "reply") {
            section = &dump.reply;
        } else {
            append(section, line);
        }
    }
    return dump;
}

}  // namespace support
