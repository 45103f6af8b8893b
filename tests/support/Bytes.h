// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_BYTES_H
#define VOXTREL_TESTS_SUPPORT_BYTES_H

#include <cstdint>
#include <string>
#include <vector>

#include "ipc/BinderHeaders.h"

namespace support {

using Bytes = std::vector<uint8_t>;

/// The whole image of a parcel, wherever it is being read.
Bytes bytesOf(const android::Parcel& parcel);

/// Puts `bytes` behind what `parcel` holds and leaves it to be read from the start. Their number is
/// a multiple of 4, as in every parcel.
void fill(android::Parcel& parcel, const Bytes& bytes);

/// The bytes in hexadecimal, four to a line, so that two images are compared word by word.
std::string hex(const Bytes& bytes);

/// What `hex` prints, back as bytes; everything from a '|' to the end of its line is a remark.
Bytes fromHex(const std::string& text);

}  // namespace support

#endif
