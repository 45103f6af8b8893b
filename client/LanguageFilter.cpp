// SPDX-License-Identifier: Apache-2.0
#include "client/TTSClientPrivate.h"
#include "client/internal/DeviceFilter.h"
#include "client/internal/Log.h"
#include "client/internal/Operations.h"
#include "client/internal/Values.h"
#include "vocabulary/Status.h"

namespace TTS {

int TTSClientPrivate::supportVoiceByFilter(void* voice, bool* listed) {
    bool isListed = false;
    const int result = voice != nullptr ? findVoiceInFilter(load<VoiceInfo>(voice), &isListed) : 0;
    if (listed != nullptr) {
        *listed = isListed;
    }
    return result;
}

int TTSClientPrivate::languageByFilter(EN_VOXTREL_LANGUAGE lang) {
    return isFilteredOut(lang) ? 1 : 0;
}

std::string TTSClientPrivate::supportLanguages() {
    if (!mSupportedLanguages.empty()) {
        return mSupportedLanguages;
    }
    dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("TTSClientPrivate(), enter supportLanguages"));
    for (int32_t id = LANG_EN_US; id < LANG_NA; ++id) {
        const auto language = static_cast<EN_VOXTREL_LANGUAGE>(id);
        if (speaks(mCapabilities, language) && !isFilteredOut(language)) {
            mSupportedLanguages += mSupportedLanguages.empty() ? "" : ",";
            mSupportedLanguages += langId2Str(language);
        }
    }
    dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("TTSClientPrivate(), mSupportedLanguages = %s"),
             mSupportedLanguages.c_str());
    return mSupportedLanguages;
}

int TTSClientPrivate::setLanguage(void* code) {
    if (code == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    const std::string text(static_cast<const char*>(code));
    dbgPrint(kLogTrace, VOXTREL_DEBUG_LINE("[Client] %s(), setLanguage = %s"), "setLanguage",
             text.c_str());
    const EN_VOXTREL_LANGUAGE language = langStr2Id(text);
    if (language < LANG_NA && !speaks(mCapabilities, language)) {
        dbgPrint(kLogRejected, "setLanguage: %s, %d, not support \n", text.c_str(), language);
        return STATUS_NOT_SUPPORTED;
    }
    if (isFilteredOut(language)) {
        dbgPrint(kLogRejected, "setLanguage: %s, %d, not support because of filter \n",
                 text.c_str(), language);
        return STATUS_NOT_SUPPORTED;
    }
    if (text != mSetting.mLang) {
        mSetting.mVoice = language == LANG_NA ? kNeverSet : 0;
        mSetting.mLang = text;
        announce(*this, SETTING_LANGUAGE);
    }
    return STATUS_OK;
}

int TTSClientPrivate::getLangPropertyLen() {
    if (mSetting.mLang.empty()) {
        dbgPrint(kLogRejected, "get language length: string object is empty\n");
    }
    return static_cast<int>(mSetting.mLang.size());
}

}  // namespace TTS
