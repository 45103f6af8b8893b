// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Prosody.h"

#include <algorithm>

namespace sd_voxtrel {

double Scale::at(int value) const {
    constexpr int kFull = 100;
    const double part = std::clamp(value, -kFull, kFull) / static_cast<double>(kFull);
    const double middle = std::clamp(own.value_or((least + most) / 2), least, most);
    return middle + part * (part < 0 ? middle - least : most - middle);
}

}  // namespace sd_voxtrel
