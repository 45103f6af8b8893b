// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_LANGUAGES_H
#define VOXTREL_TOOLS_LANGUAGES_H

#include <string>
#include <string_view>
#include <vector>

namespace voxtrelctl {

/// The codes of the languages that there are, as in "en_US".
std::vector<std::string> languageCodes();

/// The code of the language that a person means: "fr_FR" for "fr", "FR", "fr-FR", "fr_fr.UTF-8";
/// and "en_US" for "en-GB", the nearest, which is said on standard error. Throws Failure(-3),
/// listing those that there are, for none.
std::string requireLanguage(std::string_view text);

/// "fr-FR", as the interface for applications has it, and back.
std::string tagOf(std::string code);
std::string codeOf(std::string tag);

}  // namespace voxtrelctl

#endif
