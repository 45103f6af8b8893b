// SPDX-License-Identifier: Apache-2.0
#include "tools/Utterances.h"

namespace voxtrelctl {

void Utterances::see(const Event& event) {
    const auto found = isOfUtterance(event) ? mOpen.find(event.second) : mOpen.end();
    if (found == mOpen.end()) {
        return;
    }
    // A stopped event proves nothing: what is refused is told at once, before its turn.
    if (kindOf(event) != EventKind::Stopped) {
        passed(event.second - 1);
    }
    found->second = true;
    if (isTerminal(event)) {
        mOpen.erase(found);
    }
}

void Utterances::passed(uint32_t number) {
    for (auto each = mOpen.begin(); each != mOpen.end() && each->first <= number;) {
        if (each->second) {
            ++each;
        } else {
            mLost = mLost.value_or(each->first);
            each = mOpen.erase(each);
        }
    }
}

}  // namespace voxtrelctl
