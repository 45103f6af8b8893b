// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_PAUSE_H
#define VOXTREL_CLIENT_PAUSE_H

#include <cstdint>

namespace TTS {

/// The one place where the client waits: sleeps `microseconds`, less when a signal arrives.
void pauseMicroseconds(uint32_t microseconds);

}  // namespace TTS

#endif
