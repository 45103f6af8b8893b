// SPDX-License-Identifier: Apache-2.0
#include "vocabulary/Language.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using TTS::langId2Str;
using TTS::langStr2Id;

EN_VOXTREL_LANGUAGE idOf(int32_t value) {
    return static_cast<EN_VOXTREL_LANGUAGE>(value);
}

struct Pair {
    EN_VOXTREL_LANGUAGE id;
    int32_t value;
    const char* code;
};

constexpr Pair kPairs[] = {
    {LANG_EN_US, 0, "en_US"}, {LANG_FR_FR, 1, "fr_FR"}, {LANG_ES_ES, 2, "es_ES"},
    {LANG_KO_KR, 3, "ko_KR"}, {LANG_PT_PT, 4, "pt_PT"}, {LANG_NA, 5, "na_NL"},
};

TEST(LanguageId, HasTheFixedValueAndCode) {
    for (const Pair& pair : kPairs) {
        EXPECT_EQ(pair.value, static_cast<int32_t>(pair.id));
        EXPECT_EQ(pair.code, langId2Str(pair.id));
    }
}

TEST(LanguageId, IsAThirtyTwoBitSignedValue) {
    static_assert(sizeof(EN_VOXTREL_LANGUAGE) == 4, "one word on the wire");
    EXPECT_LT(idOf(-1), LANG_EN_US);
}

TEST(LanguageId, ComesBackFromItsCode) {
    for (const Pair& pair : kPairs) {
        EXPECT_EQ(pair.id, langStr2Id(langId2Str(pair.id)));
    }
}

TEST(LanguageId, OutsideTheLanguagesMeansNoLanguage) {
    for (int32_t value : {5, 6, 1000, std::numeric_limits<int32_t>::max(), -1,
                          std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ("na_NL", langId2Str(idOf(value))) << value;
    }
}

TEST(LanguageCode, MustMatchWholeAndInCase) {
    for (const char* code : {"EN_US", "en_us", "en_US ", " en_US", "en_US\r", "en_USx", "en", "en_",
                             "", "na_NL", "de_DE"}) {
        EXPECT_EQ(LANG_NA, langStr2Id(code)) << '"' << code << '"';
    }
}

TEST(LanguageCode, IsComparedBeyondANulByte) {
    EXPECT_EQ(LANG_NA, langStr2Id(std::string("en_US\0x", 7)));
}

}  // namespace
