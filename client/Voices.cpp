// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "client/TTSClientPrivate.h"
#include "client/internal/CurrentLanguage.h"
#include "client/internal/DeviceFilter.h"
#include "client/internal/Log.h"
#include "client/internal/Operations.h"
#include "client/internal/Values.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

constexpr int kTableSize = 2;

// Returned by supportVoicesInfo: one table for the process, as its callers expect.
VoiceInfo gVoiceInfo[kTableSize];
VoiceInfo* gVoiceList[kTableSize + 1];

/// Enters a copy, its name cut to leave a terminator.
void enterVoice(int slot, const VoiceInfo& voice) {
    VoiceInfo& entry = gVoiceInfo[slot];
    entry = voice;
    entry.name[sizeof entry.name - 1] = '\0';
    gVoiceList[slot] = &entry;
    dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("gVoiceInfo[%d].langId = %d, .id = %d, .name = %s"),
             slot, entry.langId, entry.id, entry.name);
}

/// Fills the table with the usable voices of a language and returns how many it holds.
int enterVoices(const Capabilities& capabilities, EN_VOXTREL_LANGUAGE language) {
    int count = 0;
    for (const VoiceInfo& voice : capabilities.voices) {
        if (voice.langId != language) {
            continue;
        }
        if (count == kTableSize) {
            dbgPrint(kLogRejected, "voice array size is not enough.\n");
            break;
        }
        if (isUsable(voice)) {
            enterVoice(count, voice);
            ++count;
        }
    }
    gVoiceList[count] = nullptr;
    return count;
}

/// Voices of the current language; 0 when it is unknown.
int32_t currentVoiceCount(TTSClientPrivate& client, const char* logFormat) {
    EN_VOXTREL_LANGUAGE language = LANG_NA;
    const int failure = resolveLanguage(client, logFormat, &language);
    return failure == 0 ? voiceCount(client.mCapabilities, language) : 0;
}

}  // namespace

int TTSClientPrivate::supportVoicesInfo(void* out) {
    VoiceInfo** list = nullptr;
    if (copyOut(list, out) != 0) {
        return STATUS_BAD_PARAMETER;
    }
    EN_VOXTREL_LANGUAGE language = LANG_NA;
    const int failure = resolveLanguage(
        *this,
        VOXTREL_DEBUG_LINE(
            "TTSClientPrivate(), supportVoicesInfo, get global language = %s SUCCESS"),
        &language);
    if (failure != 0) {
        return failure;
    }
    if (language >= LANG_NA) {
        return STATUS_BAD_PARAMETER;
    }
    dbgPrint(kLogTrace,
             VOXTREL_DEBUG_LINE("TTSClientPrivate(), supportVoicesInfo, get language id = %d"),
             language);
    if (mCapabilities.voices.empty()) {
        return STATUS_OK;  // the table that another client was given stays as it is
    }
    if (enterVoices(mCapabilities, language) > 0) {
        list = gVoiceList;
    }
    return copyOut(list, out);
}

int TTSClientPrivate::setVoice(void* voice) {
    if (voice == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    const auto id = load<uint32_t>(voice);
    dbgPrint(kLogTrace, "[Client] %s(), voice = %d\n", "setVoice", id);
    const EN_VOXTREL_LANGUAGE language = langStr2Id(mSetting.mLang);
    if (language >= LANG_NA) {
        return STATUS_NO_LANGUAGE;
    }
    const int32_t count = voiceCount(mCapabilities, language);
    if (static_cast<uint32_t>(count) < id) {
        dbgPrint(kLogRejected, "setVoice: %d, bad parameter\n", id);
        return STATUS_BAD_PARAMETER;
    }
    int refusal = refusalOfFeature(*this, GCONF_VOICE_ENABLE, count != 0);
    if (refusal == 0) {
        refusal = refusalOfVoice(mCapabilities, language, id);
    }
    if (refusal == 0 && mSetting.mVoice != id) {
        mSetting.mVoice = id;
        announce(*this, SETTING_VOICE);
    }
    return refusal;
}

int TTSClientPrivate::ttsVoiceMin() {
    const int32_t count = currentVoiceCount(
        *this, VOXTREL_DEBUG_LINE("TTSClientPrivate(), ttsVoiceMin, get global language = %s"));
    return count != 0 ? 1 : 0;
}

int TTSClientPrivate::ttsVoiceMax() {
    return currentVoiceCount(
        *this, VOXTREL_DEBUG_LINE("TTSClientPrivate(), ttsVoiceMax, get global language = %s"));
}

int TTSClientPrivate::supportVoicesNum() {
    EN_VOXTREL_LANGUAGE language = LANG_NA;
    const int failure = resolveLanguage(
        *this, VOXTREL_DEBUG_LINE("TTSClientPrivate(), supportVoicesNum, get global language = %s"),
        &language);
    if (failure != 0 || language >= LANG_NA) {
        return 0;
    }
    const bool hasVoices = voiceCount(mCapabilities, language) != 0;
    return refusalOfFeature(*this, GCONF_VOICE_ENABLE, hasVoices) == 0 ? 1 : 0;
}

}  // namespace TTS
