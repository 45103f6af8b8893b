// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Repeats.h"

#include <cstdlib>

namespace voxtrel_test {

namespace {

bool runSlowly() {
#ifdef VOXTREL_TESTS_RUN_SLOWLY
    return true;
#else
    return std::getenv("VOXTREL_TESTS_RUN_SLOWLY") != nullptr;
#endif
}

}  // namespace

int repeats(int natively) {
    return runSlowly() ? (natively + 7) / 8 : natively;
}

}  // namespace voxtrel_test
