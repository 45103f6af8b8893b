// SPDX-License-Identifier: Apache-2.0
#include "tools/Languages.h"

#include <algorithm>

#include "tools/Errors.h"
#include "tools/Text.h"
#include "vocabulary/Language.h"

namespace voxtrelctl {
namespace {

constexpr std::size_t kLanguagePart = 2;

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// "fr_fr" of "fr-FR.UTF-8".
std::string normal(std::string_view text) {
    std::string plain(text.substr(0, text.find_first_of(".@")));
    std::transform(plain.begin(), plain.end(), plain.begin(), &lower);
    std::replace(plain.begin(), plain.end(), '-', '_');
    return plain;
}

std::string replaced(std::string text, char from, char to) {
    std::replace(text.begin(), text.end(), from, to);
    return text;
}

}  // namespace

std::vector<std::string> languageCodes() {
    std::vector<std::string> codes;
    codes.reserve(LANG_NA);
    for (int id = 0; id < LANG_NA; ++id) {
        codes.push_back(TTS::langId2Str(static_cast<EN_VOXTREL_LANGUAGE>(id)));
    }
    return codes;
}

std::string requireLanguage(std::string_view text) {
    const std::string wanted = normal(text);
    const std::string language = wanted.substr(0, wanted.find('_'));
    std::string nearest;
    std::string all;
    for (const std::string& code : languageCodes()) {
        if (normal(code) == wanted) {
            return code;
        }
        nearest = code.substr(0, kLanguagePart) == language ? code : nearest;
        all += (all.empty() ? "" : ",") + code;
    }
    if (nearest.empty()) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      "there is no language \"" + std::string(text) + "\"", "there are " + all);
    }
    if (wanted != language) {
        printError("there is no " + forTerminal(std::string(text)) + "; taking the nearest, " +
                   nearest);
    }
    return nearest;
}

std::string tagOf(std::string code) {
    return replaced(std::move(code), '_', '-');
}

std::string codeOf(std::string tag) {
    return replaced(std::move(tag), '-', '_');
}

}  // namespace voxtrelctl
