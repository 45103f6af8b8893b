// SPDX-License-Identifier: Apache-2.0
#include "ipc/Callback.h"

namespace TTS {

Callback::Callback(void (*func)(unsigned, unsigned, unsigned)) : mFunc(func) {}

bool Callback::notify(unsigned int a, unsigned int b, unsigned int c) {
    mFunc(a, b, c);
    return true;
}

}  // namespace TTS
