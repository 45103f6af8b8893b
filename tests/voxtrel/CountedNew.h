// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_COUNTEDNEW_H
#define VOXTREL_TESTS_VOXTREL_COUNTEDNEW_H

#include <cstddef>

namespace voxtrel_test {

/// How often the calling thread has asked for memory.
std::size_t allocationsOfThisThread();

}  // namespace voxtrel_test

#endif
