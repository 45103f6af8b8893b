// SPDX-License-Identifier: Apache-2.0
#include "client/CurrentLanguage.h"

#include "client/Log.h"
#include "client/SettingChange.h"
#include "client/Status.h"

namespace TTS {

int askGlobalLanguage(TTSClientPrivate& client, const char* logFormat,
                      EN_VOXTREL_LANGUAGE* language) {
    char code[16 + 1] = {};  // the service may fill all 16 and sends no terminator
    const int failure = client.globalConfig(GCONF_LANGUAGE, code);
    if (failure != 0) {
        return failure;
    }
    dbgPrint(kLogTrace, logFormat, code);
    *language = langStr2Id(code);
    return status::kOk;
}

int resolveLanguage(TTSClientPrivate& client, const char* logFormat,
                    EN_VOXTREL_LANGUAGE* language) {
    *language = langStr2Id(client.mSetting.mLang);
    return *language < LANG_NA ? status::kOk : askGlobalLanguage(client, logFormat, language);
}

}  // namespace TTS
