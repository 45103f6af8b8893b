// SPDX-License-Identifier: Apache-2.0
#include "client/internal/Operations.h"

#include <cstddef>

#include "client/SharedConnection.h"
#include "client/internal/Log.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

constexpr size_t kLanguages = LANG_NA;

/// A record may have fewer or more entries than there are languages: both limits are checked.
bool hasEntry(size_t language, size_t entries) {
    return language < kLanguages && language < entries;
}

}  // namespace

android::sp<ITextToSpeechFestival> currentService() {
    return gttsbinder;
}

bool heldByAnother(const TTSClientPrivate& client,
                   const android::sp<ITextToSpeechFestival>& service) {
    return !client.mLockOwner && service->locked();
}

int refusalToChange(const TTSClientPrivate& client,
                    const android::sp<ITextToSpeechFestival>& service) {
    if (service == nullptr) {
        return STATUS_NO_SERVICE;
    }
    return heldByAnother(client, service) ? STATUS_LOCKED : STATUS_OK;
}

int refusalToSpeak(TTSClientPrivate& client, const android::sp<ITextToSpeechFestival>& service) {
    if (service == nullptr) {
        return STATUS_NO_SERVICE;
    }
    if (!client.enabled()) {
        return STATUS_DISABLED;
    }
    return refusalToChange(client, service);
}

int refusalOfFeature(TTSClientPrivate& client, VOXTRELAPI_GCONF flagKey, bool capable) {
    bool enabled = false;
    const int failure = client.enabled2(flagKey, &enabled);
    if (failure != 0) {
        return failure;
    }
    if (!enabled || !capable) {
        logNotSupported();
        return STATUS_NOT_SUPPORTED;
    }
    return STATUS_OK;
}

void announce(const TTSClientPrivate& client, SettingKind kind) {
    if (client.mCbFunc != nullptr) {
        client.mCbFunc(EVENT_SETTING, 0, kind);
    }
}

bool speaks(const Capabilities& capabilities, EN_VOXTREL_LANGUAGE language) {
    const auto index = static_cast<size_t>(language);
    return hasEntry(index, capabilities.languages.size()) && capabilities.languages[index];
}

int32_t voiceCount(const Capabilities& capabilities, EN_VOXTREL_LANGUAGE language) {
    const auto index = static_cast<size_t>(language);
    return hasEntry(index, capabilities.voicesNum.size()) ? capabilities.voicesNum[index] : 0;
}

}  // namespace TTS
