// SPDX-License-Identifier: Apache-2.0
#include "kernel/ReturnBuffer.h"

#include <algorithm>
#include <cstring>

namespace android::kernel {

namespace {

// The size is part of the command's number, so unknown returns can be skipped.
size_t payloadSize(uint32_t command) {
    return _IOC_SIZE(command);
}

}  // namespace

void Return::copyTo(void* out, size_t size) const {
    std::memcpy(out, mPayload, std::min(size, payloadSize(mCommand)));
}

bool ReturnBuffer::next(Return* out) {
    uint32_t command = 0;
    if (mSize - mPosition < sizeof(command)) {
        return false;
    }
    std::memcpy(&command, mBytes + mPosition, sizeof(command));
    const size_t left = mSize - mPosition - sizeof(command);
    if (payloadSize(command) > left) {
        return false;
    }
    *out = Return(command, mBytes + mPosition + sizeof(command));
    mPosition += sizeof(command) + payloadSize(command);
    return true;
}

}  // namespace android::kernel
