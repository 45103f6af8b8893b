// SPDX-License-Identifier: Apache-2.0
#include "client/Pause.h"

#include <unistd.h>

namespace TTS {

void pauseMicroseconds(uint32_t microseconds) {
    (void)usleep(microseconds);  // a pause cut short by a signal only asks the service sooner
}

}  // namespace TTS
