// SPDX-License-Identifier: Apache-2.0
#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"

namespace TTS {

// Destroyed from the last to the first: a dying DeathNotifier looks at gttsbinder, so the proxy
// outlives it, and the mutex outlives all that a late binder thread may still report.
Mutex Clientmutex;
android::sp<ITextToSpeechFestival> gttsbinder;
android::sp<DeathNotifier> gDeathNotifier;
android::sp<Callback> TTSClientPrivate::m_cb;
android::sp<TTSClientPrivate::CbDeathNotifier> TTSClientPrivate::mCbDeathNotifier;

}  // namespace TTS
