// SPDX-License-Identifier: Apache-2.0
#include "vocabulary/Language.h"

namespace TTS {
namespace {

// "na_NL" is what profiles in the field hold for an unset language; it must stay as it is.
constexpr char kCodes[][6] = {"en_US", "fr_FR", "es_ES", "ko_KR", "pt_PT", "na_NL"};

}  // namespace

std::string langId2Str(EN_VOXTREL_LANGUAGE id) {
    const bool isLanguage = id >= LANG_EN_US && id < LANG_NA;
    return kCodes[isLanguage ? id : LANG_NA];
}

EN_VOXTREL_LANGUAGE langStr2Id(const std::string& code) {
    for (int32_t id = LANG_EN_US; id < LANG_NA; ++id) {
        // Most differ in their first letter, which takes no call to see.
        if (code[0] == kCodes[id][0] && code == kCodes[id]) {
            return static_cast<EN_VOXTREL_LANGUAGE>(id);
        }
    }
    return LANG_NA;
}

}  // namespace TTS
