// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_SHAREDCONNECTION_H
#define VOXTREL_CLIENT_SHAREDCONNECTION_H

#include "client/DeathNotifier.h"
#include "client/Mutex.h"
#include "ipc/BinderHeaders.h"
#include "ipc/ITextToSpeechFestival.h"

/// What all client objects of one process share, together with the two static members of
/// `TTSClientPrivate`. Each pointer is empty when the library is loaded and released when it is
/// unloaded.
namespace TTS {

/// The proxy of the service; empty while the process is not connected.
///
/// Set by `getService` under `Clientmutex`; emptied by service death under `Clientmutex`, and by
/// the construction and destruction of any client object without it. Operations copy it once
/// without the mutex and work on the copy. docs/threading.md lists the races that this leaves.
extern android::sp<ITextToSpeechFestival> gttsbinder;

/// Watches the service's binder; replaced by each `getService` that finds a service.
extern android::sp<DeathNotifier> gDeathNotifier;

/// Held by `getService` for its whole run and by `DeathNotifier::binderDied` while it empties
/// `gttsbinder`. Nothing else takes it.
extern Mutex Clientmutex;

}  // namespace TTS

#endif
