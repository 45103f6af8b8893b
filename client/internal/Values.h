// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_INTERNAL_VALUES_H
#define VOXTREL_CLIENT_INTERNAL_VALUES_H

#include <cstring>

#include "vocabulary/Status.h"

namespace TTS {

/// The T at an address that may be unaligned.
template <typename T>
T load(const void* address) {
    T value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

/// Writes `value` to an address that may be unaligned: 0, or -3 for null.
template <typename T>
int copyOut(const T& value, void* out) {
    if (out == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    std::memcpy(out, &value, sizeof value);
    return STATUS_OK;
}

}  // namespace TTS

#endif
