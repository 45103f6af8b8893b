// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_REPEATS_H
#define VOXTREL_TESTS_SUPPORT_REPEATS_H

namespace voxtrel_test {

/// How often a test does what it watches: as often as it says in a native build, and an eighth of
/// that where a sanitizer or an emulator makes each instruction cost many.
constexpr int repeats(int natively) {
#ifdef VOXTREL_TESTS_RUN_SLOWLY
    return (natively + 7) / 8;
#else
    return natively;
#endif
}

}  // namespace voxtrel_test

#endif
