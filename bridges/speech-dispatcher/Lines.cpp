// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Lines.h"

#include <algorithm>

namespace sd_voxtrel {

void Lines::add(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size());
        const std::size_t room = kLongest + 1 - mUnfinished.size();
        mUnfinished.append(bytes.substr(0, std::min(end, room)));
        if (end == bytes.size()) {
            return;
        }
        mBytes.append(mUnfinished).push_back('\n');
        mUnfinished.clear();
        bytes.remove_prefix(end + 1);
    }
}

bool Lines::next(std::string& line) {
    const std::size_t end = mBytes.find('\n', mBegin);
    if (end == std::string::npos) {
        mBytes.clear();
        mBegin = 0;
        return false;
    }
    line.assign(mBytes, mBegin, end - mBegin);
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    mBegin = end + 1;
    return true;
}

}  // namespace sd_voxtrel
