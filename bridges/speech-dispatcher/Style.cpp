// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Service.h"

#include <utility>

namespace sd_voxtrel {
namespace {

bool isNumber(const std::string& text) {
    return text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

bool Style::relax() {
    if (voice && language && !isNumber(*voice)) {
        fallback = std::exchange(language, std::nullopt);  // a name may be of another language
        return true;
    }
    if (voice) {
        voice.reset();
        language = language ? language : std::exchange(fallback, std::nullopt);
        return true;
    }
    if (language) {
        language.reset();
        return true;
    }
    const bool hasNumbers = rate != 0 || pitch != 0 || volume != 0;
    rate = pitch = volume = 0;
    return hasNumbers;
}

}  // namespace sd_voxtrel
