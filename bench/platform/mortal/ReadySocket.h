// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_PLATFORM_MORTAL_READYSOCKET_H
#define VOXTREL_BENCH_PLATFORM_MORTAL_READYSOCKET_H

namespace bench {

/// Number of the socket through which the process says that it is ready. Linux closes a dead
/// process's descriptors from the highest number down, so this one tells when it begins to; a
/// higher one would take a larger table.
constexpr int kReadySocket = 63;

}  // namespace bench

#endif
