// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_WIRE_H
#define VOXTREL_SESSION_WIRE_H

#include <cstdint>

namespace voxtrel::wire {

constexpr unsigned kFlushEverything = 0;
constexpr unsigned kFlushOwn = 1;

/// Refused at once by a service that keeps the rules (docs/writing-a-service.md).
constexpr std::uint32_t kEndlessPause = 0xFFFFFFFF;

}  // namespace voxtrel::wire

#endif
