// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_MEMFD_H
#define VOXTREL_SOCKET_MEMFD_H

#include <cstddef>
#include <cstdint>

#include "support/Fd.h"

namespace android::transport {

/// A memfd that holds `size` bytes and can never change again; invalid when there is no room.
Fd sealedCopy(const uint8_t* bytes, size_t size);

/// Copies exactly `size` bytes out of a memfd. False when it has another size, is not sealed
/// against change, or is no memfd at all.
bool readSealed(const Fd& memfd, uint8_t* out, size_t size);

}  // namespace android::transport

#endif
