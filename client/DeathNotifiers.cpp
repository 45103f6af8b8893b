// SPDX-License-Identifier: Apache-2.0
// What the client does when the service dies, and when its own callback does.
#include "client/DeathNotifier.h"
#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"
#include "client/internal/Log.h"
#include "client/internal/MutexLock.h"

namespace TTS {

DeathNotifier::~DeathNotifier() {
    const android::sp<ITextToSpeechFestival> service = gttsbinder;
    if (service == nullptr) {
        return;
    }
    const android::sp<android::IBinder> binder = android::IInterface::asBinder(service);
    if (binder == nullptr) {
        return;
    }
    (void)binder->unlinkToDeath(android::wp<android::IBinder::DeathRecipient>(this), nullptr, 0,
                                nullptr);  // the link may be gone already
}

void DeathNotifier::binderDied(const android::wp<android::IBinder>&) {
    printDeath(93);
    // Released without the lock: its destructor may run an application's code.
    android::sp<ITextToSpeechFestival> dead;
    const MutexLock lock(Clientmutex);
    dead = gttsbinder;
    gttsbinder.clear();
}

TTSClientPrivate::CbDeathNotifier::~CbDeathNotifier() = default;

void TTSClientPrivate::CbDeathNotifier::binderDied(const android::wp<android::IBinder>&) {
    printDeath(107);
    m_cb.clear();
}

}  // namespace TTS
