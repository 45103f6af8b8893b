// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_MEMFD_H
#define VOXTREL_SOCKET_MEMFD_H

#include <cstddef>
#include <cstdint>

#include "support/Fd.h"

namespace android::transport {

/// A memfd that holds `size` bytes and can never change again; invalid when there is no room.
Fd sealedCopy(const uint8_t* bytes, size_t size);

/// Is this a memfd of exactly `size` bytes that can never change again?
bool isSealed(const Fd& fd, size_t size);
/// Copies these bytes out of it. False when that fails; errno says why.
bool readSealed(const Fd& memfd, uint8_t* out, size_t size);

}  // namespace android::transport

#endif
