// SPDX-License-Identifier: Apache-2.0
#include "client/DeathNotifier.h"

#include "client/Log.h"
#include "client/MutexLock.h"
#include "client/SharedConnection.h"

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
                                nullptr);  // a link that is already gone is what we want
}

void DeathNotifier::binderDied(const android::wp<android::IBinder>&) {
    printDeath(93);
    android::sp<ITextToSpeechFestival> dead;  // outlives the lock: its end may run foreign code
    const MutexLock lock(Clientmutex);
    dead = gttsbinder;
    gttsbinder.clear();
}

}  // namespace TTS
