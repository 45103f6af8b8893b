// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_REPEATS_H
#define VOXTREL_TESTS_SUPPORT_REPEATS_H

namespace voxtrel_test {

/// How often a test does what it watches: as often as it says in a native build, and an eighth of
/// that where each instruction costs many: in a build for a sanitizer or an emulator, and where
/// $VOXTREL_TESTS_RUN_SLOWLY is set, as it is on an emulated board and where libc++ is tried.
int repeats(int natively);

}  // namespace voxtrel_test

#endif
