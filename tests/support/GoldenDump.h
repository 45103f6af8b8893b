// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_GOLDENDUMP_H
#define VOXTREL_TESTS_SUPPORT_GOLDENDUMP_H

#include <cstdint>
#include <string>

#include "tests/support/Bytes.h"

namespace support {

/// One transaction as it must look on the wire, written by hand in a text file:
///
///     code 2
///     flags 1
///     request
///     e8 03 00 00 | pid 1000
///     reply
///     2a 00 00 00 | status
///
/// `binder` on a line of its own ends a request with an object reference, whose image belongs to
/// the platform.
struct GoldenDump {
    uint32_t code = 0;
    uint32_t flags = 0;
    Bytes request;
    bool requestEndsWithBinder = false;
    Bytes reply;
};

/// Reads a dump. Throws std::runtime_error, with the line, on anything that is not one.
GoldenDump readGoldenDump(const std::string& path);

}  // namespace support

#endif
