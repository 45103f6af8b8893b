// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Bytes.h"

#include <cstdio>
#include <sstream>

namespace support {

Bytes bytesOf(const android::Parcel& parcel) {
    const uint8_t* data = parcel.data();
    return data == nullptr ? Bytes() : Bytes(data, data + parcel.dataSize());
}

void fill(android::Parcel& parcel, const Bytes& bytes) {
    if (!bytes.empty()) {
        parcel.write(bytes.data(), bytes.size());
    }
    parcel.setDataPosition(0);
}

std::string hex(const Bytes& bytes) {
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x%c", bytes[i], i % 4 == 3 ? '\n' : ' ');
        text += digits;
    }
    return text;
}

Bytes fromHex(const std::string& text) {
    Bytes bytes;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream digits(line.substr(0, line.find('|')));
        for (std::string pair; digits >> pair;) {
            bytes.push_back(static_cast<uint8_t>(std::stoul(pair, nullptr, 16)));
        }
    }
    return bytes;
}

}  // namespace support
