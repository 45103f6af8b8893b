// SPDX-License-Identifier: Apache-2.0
#include "client/Log.h"
#include "client/TTSClientPrivate.h"

namespace TTS {

TTSClientPrivate::CbDeathNotifier::~CbDeathNotifier() = default;

void TTSClientPrivate::CbDeathNotifier::binderDied(const android::wp<android::IBinder>&) {
    printDeath(107);
    m_cb.clear();
}

}  // namespace TTS
