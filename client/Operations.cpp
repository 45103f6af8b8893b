// SPDX-License-Identifier: Apache-2.0
#include "client/Operations.h"

#include <cstddef>

#include "client/Log.h"
#include "client/SharedConnection.h"
#include "client/Status.h"

namespace TTS {
namespace {

constexpr size_t kLanguages = LANG_NA;

/// A record may be shorter or longer than the languages there are: both ends count.
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
        return status::kNoService;
    }
    return heldByAnother(client, service) ? status::kLocked : status::kOk;
}

int refusalToSpeak(TTSClientPrivate& client, const android::sp<ITextToSpeechFestival>& service) {
    if (service == nullptr) {
        return status::kNoService;
    }
    if (!client.enabled()) {
        return status::kSpeechDisabled;
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
        return status::kNotSupported;
    }
    return status::kOk;
}

void announce(const TTSClientPrivate& client, SettingKind kind) {
    if (client.mCbFunc != nullptr) {
        client.mCbFunc(kSettingChanged, 0, kind);
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
