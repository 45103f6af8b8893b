// SPDX-License-Identifier: Apache-2.0
#include "check/Row.h"

namespace check {

Rows allRows() {
    Rows all;
    for (const Rows& part :
         {referenceRows(), interfaceRows(), parcelRows(), callRows(), deathRows(), nameRows()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Seen judged(bool holds, const std::string& what) {
    return {holds ? Verdict::Right : Verdict::Wrong, what};
}

Seen preferred(bool holds, const std::string& what) {
    return {holds ? Verdict::Right : Verdict::Tolerated, what};
}

}  // namespace check
