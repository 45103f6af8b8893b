// SPDX-License-Identifier: Apache-2.0
#include "client/Mutex.h"

namespace TTS {

Mutex::Mutex() {
    pthread_mutex_init(&m, nullptr);
}

Mutex::~Mutex() {
    pthread_mutex_destroy(&m);
}

}  // namespace TTS
