// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_DEATHNOTIFIER_H
#define VOXTREL_CLIENT_DEATHNOTIFIER_H

#include "ipc/BinderHeaders.h"

namespace TTS {

/// Watches the service's binder and disconnects the whole process when the service dies.
///
/// Created and linked by `TTSClientPrivate::getService`, kept in `gDeathNotifier`. Reference
/// counted; the binder runtime itself holds it only weakly.
class DeathNotifier : public android::IBinder::DeathRecipient {
public:
    /// Unlinks this recipient from the service binder when `gttsbinder` is set.
    /// Called on: whichever thread drops the last reference. Locks: none.
    ~DeathNotifier() override;

    /// Prints one line to standard output and empties `gttsbinder`, so that every operation of
    /// every client object returns -5 until the next `connect`. `gDeathNotifier` stays.
    ///
    /// Called on: a binder thread. Locks: `Clientmutex`, so a death during `getService` waits until
    /// `getService` has finished. The proxy is let go after the mutex.
    void binderDied(const android::wp<android::IBinder>& who) override;
};

}  // namespace TTS

#endif
