// SPDX-License-Identifier: Apache-2.0
#include "client/internal/CurrentLanguage.h"

#include <cstddef>

#include "client/internal/Log.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

/// A proxy stores 16 bytes at most; a service of this process may fill what the interface gives it.
constexpr size_t kLongestCode = 256;

}  // namespace

int askGlobalLanguage(TTSClientPrivate& client, const char* logFormat,
                      EN_VOXTREL_LANGUAGE* language) {
    // A proxy or an implementation may leave it without a terminator.
    char code[kLongestCode + 1] = {};
    const int failure = client.globalConfig(GCONF_LANGUAGE, code);
    if (failure != 0) {
        return failure;
    }
    dbgPrint(kLogTrace, logFormat, code);
    *language = langStr2Id(code);
    return STATUS_OK;
}

int resolveLanguage(TTSClientPrivate& client, const char* logFormat,
                    EN_VOXTREL_LANGUAGE* language) {
    *language = langStr2Id(client.mSetting.mLang);
    return *language < LANG_NA ? STATUS_OK : askGlobalLanguage(client, logFormat, language);
}

}  // namespace TTS
