// SPDX-License-Identifier: Apache-2.0
#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"

namespace TTS {

// Destroyed in reverse order: the destructor of DeathNotifier reads gttsbinder, so the proxy
// outlives it, and the mutex outlives both, since a binder thread may still report a death.
Mutex Clientmutex;
android::sp<ITextToSpeechFestival> gttsbinder;
android::sp<DeathNotifier> gDeathNotifier;
android::sp<Callback> TTSClientPrivate::m_cb;
android::sp<TTSClientPrivate::CbDeathNotifier> TTSClientPrivate::mCbDeathNotifier;

}  // namespace TTS
