// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include "client/TTSClientPrivate.h"
#include "client/internal/CurrentLanguage.h"
#include "client/internal/DeviceFilter.h"
#include "client/internal/Feature.h"
#include "client/internal/Log.h"
#include "client/internal/Operations.h"
#include "client/internal/Values.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

template <typename T>
int checkNumber(TTSClientPrivate& client, const Feature<T>& feature, const void* address) {
    if (address == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    const T value = load<T>(address);
    if (feature.isOutside(value, client.mCapabilities)) {
        dbgPrint(kLogRejected, feature.globalRejectionFormat, value);
        return STATUS_BAD_PARAMETER;
    }
    return refusalOf(client, feature);
}

int checkVoice(TTSClientPrivate& client, const void* address) {
    if (address == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    const auto voice = load<uint32_t>(address);
    EN_VOXTREL_LANGUAGE language = LANG_NA;
    const int failure = askGlobalLanguage(
        client, VOXTREL_DEBUG_LINE("TTSClientPrivate(), setGlobalConfig, get global language = %s"),
        &language);
    if (failure != 0 || language >= LANG_NA) {
        return failure;  // for a language that is none of ours only the service can check the voice
    }
    const int32_t count = voiceCount(client.mCapabilities, language);
    if (static_cast<uint32_t>(count) < voice) {
        // An integer under "%f": passed as the double that the format reads.
        dbgPrint(kLogRejected, "setGlobalVoice: %f, bad parameter\n", static_cast<double>(voice));
        return STATUS_BAD_PARAMETER;
    }
    const int refusal = refusalOfFeature(client, GCONF_VOICE_ENABLE, count != 0);
    return refusal != 0 ? refusal : refusalOfVoice(client.mCapabilities, language, voice);
}

int checkLanguage(TTSClientPrivate& client, const void* value) {
    if (value == nullptr) {
        throw std::logic_error("setGlobalConfig: the language is a null pointer");
    }
    const std::string code(static_cast<const char*>(value));
    const EN_VOXTREL_LANGUAGE language = langStr2Id(code);
    if (!speaks(client.mCapabilities, language)) {
        dbgPrint(kLogRejected, "setLanguage: %s, %d, not support \n", code.c_str(), language);
        return STATUS_NOT_SUPPORTED;
    }
    if (isFilteredOut(language)) {
        dbgPrint(kLogRejected, "setLanguage: %s, %d, not support because of filter\n", code.c_str(),
                 language);
        return STATUS_NOT_SUPPORTED;
    }
    return STATUS_OK;
}

int checkValue(TTSClientPrivate& client, VOXTRELAPI_GCONF key, const void* value) {
    switch (key) {
        case GCONF_SPEED:
            return checkNumber(client, kSpeed, value);
        case GCONF_PITCH:
            return checkNumber(client, kPitch, value);
        case GCONF_VOLUME:
            return checkNumber(client, kVolume, value);
        case GCONF_BG_VOLUME:
            return checkNumber(client, kBgVolume, value);
        case GCONF_TTS_VOLUME:
            return checkNumber(client, kTtsVolume, value);
        case GCONF_VOICE:
            return checkVoice(client, value);
        case GCONF_LANGUAGE:
            return checkLanguage(client, value);
        default:
            return STATUS_OK;
    }
}

void traceKey(const char* operation, VOXTRELAPI_GCONF key) {
    dbgPrint(kLogTrace, "[Client] %s(), global config = %d\n", operation, key);
}

}  // namespace

int TTSClientPrivate::setGlobalConfig(VOXTRELAPI_GCONF key, void* value) {
    traceKey("setGlobalConfig", key);
    const android::sp<ITextToSpeechFestival> service = currentService();
    if (service == nullptr) {
        return STATUS_NO_SERVICE;
    }
    int refusal = checkValue(*this, key, value);
    if (refusal == 0) {
        refusal = refusalToChange(*this, service);
    }
    return refusal != 0 ? refusal : service->setGlobalConfig(mPid, key, value);
}

int TTSClientPrivate::globalConfig(VOXTRELAPI_GCONF key, void* out) {
    traceKey("globalConfig", key);
    const android::sp<ITextToSpeechFestival> service = currentService();
    return service != nullptr ? service->globalConfig(mPid, key, out) : STATUS_NO_SERVICE;
}

int TTSClientPrivate::setEnable2(VOXTRELAPI_GCONF key, bool enable) {
    dbgPrint(kLogTrace, "[Client] %s(), global config = %d enable = %d\n", "setEnable2", key,
             enable);
    const android::sp<ITextToSpeechFestival> service = currentService();
    const int refusal = refusalToChange(*this, service);
    return refusal != 0 ? refusal : service->setEnable2(mPid, key, enable);
}

int TTSClientPrivate::enabled2(VOXTRELAPI_GCONF key, void* out) {
    traceKey("enabled2", key);
    const android::sp<ITextToSpeechFestival> service = currentService();
    return service != nullptr ? service->enabled2(mPid, key, out) : STATUS_NO_SERVICE;
}

}  // namespace TTS
