// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_VOCABULARY_LANGUAGE_H
#define VOXTREL_VOCABULARY_LANGUAGE_H

#include <cstdint>
#include <string>

/// A language as it travels between client, service and the capability records.
///
/// Ids 0 to 4 are languages and index every per-language vector. `LANG_NA` stands for "no
/// language": the value of a setting nobody has set and of every text that names no language.
enum EN_VOXTREL_LANGUAGE : int32_t {
    LANG_EN_US = 0,  ///< "en_US", English (United States)
    LANG_FR_FR = 1,  ///< "fr_FR", French (France)
    LANG_ES_ES = 2,  ///< "es_ES", Spanish (Spain)
    LANG_KO_KR = 3,  ///< "ko_KR", Korean
    LANG_PT_PT = 4,  ///< "pt_PT", Portuguese (Portugal)
    LANG_NA = 5,     ///< "na_NL", no language
};

namespace TTS {

/// The locale code of a language id, as profile files and filter texts spell it.
///
/// @param id any value; every id outside 0 to 4 gives "na_NL".
/// @return a new string owned by the caller.
/// Called on: any thread. Locks: none.
std::string langId2Str(EN_VOXTREL_LANGUAGE id);

/// The language id of a locale code.
///
/// @param code compared whole, byte by byte and case-sensitively; nothing is trimmed.
/// @return 0 to 4, or `LANG_NA` for any other text.
/// Called on: any thread. Locks: none.
EN_VOXTREL_LANGUAGE langStr2Id(const std::string& code);

}  // namespace TTS

#endif
