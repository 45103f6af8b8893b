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

Result require(bool holds, const std::string& seen) {
    return {holds ? Verdict::Ok : Verdict::Wrong, seen};
}

Result prefer(bool holds, const std::string& seen) {
    return {holds ? Verdict::Ok : Verdict::Differs, seen};
}

}  // namespace check
