// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_INTERNAL_OPERATIONS_H
#define VOXTREL_CLIENT_INTERNAL_OPERATIONS_H

#include "client/TTSClientPrivate.h"
#include "client/internal/Feature.h"
#include "vocabulary/Events.h"

namespace TTS {

constexpr uint32_t kNeverSet = 65535;  ///< value of a numeric setting that nobody has set

/// A copy of `gttsbinder`, read without `Clientmutex`: `getService` holds the mutex for up to 75 s,
/// and speech must not wait for that. The copy keeps the proxy alive while an operation uses it.
android::sp<ITextToSpeechFestival> currentService();

/// The lock rule: true when this client does not hold the service lock and the service, asked
/// directly, says that it is locked.
bool heldByAnother(const TTSClientPrivate& client,
                   const android::sp<ITextToSpeechFestival>& service);

/// Why an operation that changes the service may not go on: -5, -7, or 0.
int refusalToChange(const TTSClientPrivate& client,
                    const android::sp<ITextToSpeechFestival>& service);

/// Why an operation of speech may not go on: -5, -1, -7, or 0.
int refusalToSpeak(TTSClientPrivate& client, const android::sp<ITextToSpeechFestival>& service);

/// Why a feature may not be used: the failure of `enabled2(flagKey)`, -9 (logged) when the flag is
/// off or the service is not `capable`, or 0.
int refusalOfFeature(TTSClientPrivate& client, VOXTRELAPI_GCONF flagKey, bool capable);

/// The same, of a feature and the capabilities that the client fetched last.
template <typename T>
int refusalOf(TTSClientPrivate& client, const Feature<T>& feature) {
    return refusalOfFeature(client, feature.flagKey, feature.isSupported(client.mCapabilities));
}

/// Tells the application, on this thread, that one of the client's settings has a new value.
void announce(const TTSClientPrivate& client, SettingKind kind);

/// The service speaks this language. False for an id that is none of ours or has no entry.
bool speaks(const Capabilities& capabilities, EN_VOXTREL_LANGUAGE language);

/// Number of voices of a language. 0 for an id that is none of ours or has no entry.
int32_t voiceCount(const Capabilities& capabilities, EN_VOXTREL_LANGUAGE language);

}  // namespace TTS

#endif
